# shellcheck shell=bash
# Installing the packages that packaging/packages.debian names. Sourced by ./run and ./test, which
# have changed into the repository's root.

packageList=packaging/packages.debian

# The packages of the sections given, one a line.
packagesOf() {
    local section
    for section in "$@"; do
        awk -v section="[$section]" '
            { sub(/[ \t]*#.*/, "") }
            /^\[/ { inside = ($1 == section); next }
            inside && NF { print $1 }' "$packageList"
    done
}

# Stops with the list of packages on anything but Debian 12.
requireDebian() {
    local system
    system=$(sed -nE 's/^(ID|VERSION_ID)="?([^"]*)"?$/\1 \2/p' /etc/os-release 2>/dev/null |
        sort | awk '{ printf "%s%s", separator, $2; separator = " " }')
    if [[ $system != "debian 12" ]]; then
        {
            echo "This system is not Debian 12 but: ${system:-unknown}."
            echo "Nothing was installed. What Debian 12 calls these packages is needed:"
            packagesOf "$@" | sed 's/^/  /'
            echo "With them in place: cmake --preset release && cmake --build --preset release"
        } >&2
        exit 1
    fi
}

missingPackages() {
    local installed
    installed=$(dpkg-query -W -f '${db:Status-Abbrev}${Package}\n' | sed -n 's/^ii *//p')
    comm -23 <(packagesOf "$@" | sort -u) <(sort -u <<<"$installed")
}

asRoot() {
    if [[ $(id -u) == 0 ]]; then
        env DEBIAN_FRONTEND=noninteractive "$@"
    elif command -v sudo >/dev/null; then
        sudo env DEBIAN_FRONTEND=noninteractive "$@"
    else
        echo "Packages are missing, and without sudo only root can install them:" >&2
        echo "  apt-get install --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
}

# The package index is fetched only when it lacks one of the packages or names outdated files.
installPackages() {
    requireDebian "$@"
    mapfile -t missing < <(missingPackages "$@")
    if ((${#missing[@]} == 0)); then
        return
    fi
    echo "Installing: ${missing[*]}"
    local install=(apt-get install -y --no-install-recommends "${missing[@]}")
    if ! apt-cache show --no-all-versions "${missing[@]}" >/dev/null 2>&1 ||
        ! asRoot "${install[@]}"; then
        asRoot apt-get update
        asRoot "${install[@]}"
    fi
}

# configurePreset NAME BINARY_DIRECTORY: afresh if the directory was configured for another place.
configurePreset() {
    local fresh=()
    local cache=$2/CMakeCache.txt
    if [[ -e $cache ]] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$cache"; then
        fresh=(--fresh)
    fi
    cmake --preset "$1" "${fresh[@]}" --log-level=WARNING
}
