#!/bin/sh
# Runs a Windows program under Wine, in a private prefix with the null graphics driver: windows,
# dialogs and pictures work on a virtual 1024x768 screen and no X server is needed.
#   WINEPREFIX  the prefix; by default a folder beside the build (QUVADA_WINEPREFIX overrides)
: "${WINEPREFIX:=${QUVADA_WINEPREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/quvada/wineprefix}}"
export WINEPREFIX
export WINEDEBUG="${WINEDEBUG:--all}"
# Without winedbg a crash ends at once instead of waiting for a debugger.
export WINEDLLOVERRIDES="winedbg.exe=d;mshtml=;mscoree=;ieframe=n,b"
export LANG=C.UTF-8
unset DISPLAY
quiet() { "$@" </dev/null >/dev/null 2>&1; }
if [ ! -e "$WINEPREFIX/.ready" ]; then
    mkdir -p "$WINEPREFIX"
    (
        flock 9
        if [ ! -e "$WINEPREFIX/.ready" ]; then
            quiet wineboot -i
            quiet wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f
            # Windows-like font metrics for the dialogs' pictures, where the package is there.
            cp /usr/share/wine/fonts/tahoma*.ttf /usr/share/wine/fonts/marlett.ttf \
               /usr/share/wine/fonts/ms_sans_serif.ttf "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null
            wineserver -k
            wineserver -w
            : >"$WINEPREFIX/.ready"
        fi
    ) 9>"$WINEPREFIX.lock"
fi
# The server stays 20 s after its last client, and its services start here with their output on
# /dev/null; else each test would wait for a service that inherited its output pipe.
quiet wineserver -p20
quiet wine cmd /c exit
exec wine "$@"
