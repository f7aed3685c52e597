# Sourced by ./test and ./demo: installs the Debian packages that are missing, and nothing twice.
#   ensure_packages GROUP...   the groups of scripts/packages.txt that are needed

die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 2
}

installed() {
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

ensure_packages() {
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null ||
        die "this script sets up Debian 12; elsewhere install what scripts/packages.txt lists"
    local name group wanted missing=() as_root=()
    while read -r name group; do
        case "$name" in '' | '#'*) continue ;; esac
        for wanted in "$@"; do
            if [ "$group" = "$wanted" ] && ! installed "$name"; then missing+=("$name"); fi
        done
    done <"$root/scripts/packages.txt"
    [ ${#missing[@]} -gt 0 ] || return 0

    printf 'Installing Debian packages: %s\n' "${missing[*]}"
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || die "needs root or sudo to install: ${missing[*]}"
        as_root=(sudo)
    fi
    local log
    log=$(mktemp)
    if ! "${as_root[@]}" apt-get update >"$log" 2>&1; then
        tail -n 5 "$log" >&2
        printf 'The package lists could not be renewed; going on with those at hand.\n' >&2
    fi
    if ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}" >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        local unknown=()
        for name in "${missing[@]}"; do
            apt-cache show "$name" >/dev/null 2>&1 || unknown+=("$name")
        done
        rm -f "$log"
        [ ${#unknown[@]} -eq 0 ] || die "no package source offers: ${unknown[*]}"
        die "could not install the packages above"
    fi
    rm -f "$log"
}
