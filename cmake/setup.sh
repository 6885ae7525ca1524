# shellcheck shell=bash
# Set-up shared by ./demo and ./check, to be sourced.

# Prints those of the packages named that are not installed.
zel_missing() {
    local package
    for package; do
        [ "$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null)" = "install ok installed" ] || echo "$package"
    done
}

# zel_need <package>...: installs the packages that are missing, if apt exists and is allowed; otherwise prints
# them and returns 1. On a system without dpkg nothing can be checked: the build fails if something is missing.
zel_need() {
    if ! command -v dpkg-query >/dev/null; then
        echo "set-up: no dpkg here; needed are the contents of these packages of Debian 12: $*"
        return 0
    fi
    local missing
    mapfile -t missing < <(zel_missing "$@")
    [ ${#missing[@]} -gt 0 ] || return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo -n)
    fi
    if ! command -v apt-get >/dev/null || { [ ${#as_root[@]} -gt 0 ] && ! sudo -n true 2>/dev/null; }; then
        echo "set-up: these packages are missing and can't be installed from here; please install them:" >&2
        echo "    apt-get install --no-install-recommends ${missing[*]}" >&2
        return 1
    fi
    echo "set-up: installing ${missing[*]}"
    "${as_root[@]}" apt-get update -q &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install -q -y --no-install-recommends "${missing[@]}" && return 0
    echo "set-up: apt-get failed; needed are: ${missing[*]}" >&2
    return 1
}
