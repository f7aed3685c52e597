#!/bin/sh
# Registers and unregisters the add-in by the system's own tool, for the machine and for the user, and
# compares the registry before and after, under Wine.
#   registration_tool_test.sh WINE_RUN DLL FOLDER
#   WINE_RUN  runs a Windows program    DLL  the add-in    FOLDER  to write to
set -u
run=$1 dll=$(printf 'Z:%s' "$2" | tr / '\\') folder=$3
class='{5E1D7B20-6C43-4A9E-9D17-3B8C2F60A1D4}'
rm -rf "$folder" && mkdir -p "$folder" || exit 2

fail() {
    echo "$1"
    exit 1
}
# Keys that a registration makes for other servers, too, and leaves.
for key in 'HKLM\Software\Microsoft\Windows\CurrentVersion\Explorer\Browser Helper Objects' \
    'HKLM\Software\Microsoft\Internet Explorer\Toolbar' 'HKLM\Software\Classes\AppID' \
    'HKCU\Software\Classes\AppID' 'HKCU\Software\Classes\CLSID'; do
    "$run" reg add "$key" /f >/dev/null 2>&1 || fail "cannot make $key"
done
snapshot() {
    n=0
    for key in 'HKLM\Software\Classes' 'HKLM\Software\Microsoft\Internet Explorer' \
        'HKLM\Software\Microsoft\Windows\CurrentVersion\Explorer' 'HKCU\Software\Classes'; do
        n=$((n + 1))
        file=$(printf 'Z:%s' "$folder/$1.$n.reg" | tr / '\\')
        "$run" reg export "$key" "$file" /y >/dev/null 2>&1 || fail "cannot export $key"
    done
    cat "$folder/$1".*.reg >"$folder/$1"
}
has_class() { "$run" reg query "$1\\Software\\Classes\\CLSID\\$class" >/dev/null 2>&1; }
tool() { "$run" regsvr32 /s "$@" "$dll" >/dev/null 2>&1 || fail "regsvr32 $* failed"; }

snapshot before
tool
has_class HKLM || fail "not registered for the machine"
snapshot registered
cmp -s "$folder/before" "$folder/registered" && fail "the comparison sees nothing"
tool /u
snapshot after
cmp "$folder/before" "$folder/after" || fail "unregistering for the machine left something"

tool /n /i:user
has_class HKCU || fail "not registered for the user"
tool /u /n /i:user
snapshot after
cmp "$folder/before" "$folder/after" || fail "unregistering for the user left something"
echo "the registry is as before"
