# shellcheck shell=bash disable=SC2154
# Sourced by ./run, ./test and .ci/run, which have set `root` to the project's folder: finds out what
# is missing, installs it on Debian and its relatives, and builds a preset. Everything that it says
# goes to standard error. Nothing is done, and nothing said, when there is nothing to do.

oldestCMake=3.25

# What one checkout has compiled serves the next one too.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

say() {
    printf '%s: %s\n' "$(basename -- "$0")" "$*" >&2
}

die() {
    say "$@"
    exit 1
}

hasCompiler() {
    command -v "${CXX:-c++}" >/dev/null
}

hasCMake() {
    local version
    version=$(cmake --version 2>/dev/null) || return 1
    version=${version#cmake version }
    version=${version%%$'\n'*}
    [[ $(printf '%s\n' "$oldestCMake" "$version" | sort -V | head -n 1) == "$oldestCMake" ]]
}

hasLibrary() {
    pkg-config --exists "$1" 2>/dev/null
}

# What is needed: Debian's package, what it is, and the test that tells that it is there.
needs=(
    'g++|a C++20 compiler (GCC 12, clang 14 or newer)|hasCompiler'
    "cmake|CMake $oldestCMake or newer|hasCMake"
    'ninja-build|Ninja|command -v ninja'
    'pkgconf|pkg-config|command -v pkg-config'
    'libpugixml-dev|pugixml, with headers|hasLibrary pugixml'
    'nlohmann-json3-dev|nlohmann-json|hasLibrary nlohmann_json'
    'libplist-dev|libplist 2, with headers|hasLibrary libplist-2.0'
    'libarchive-dev|libarchive, with headers|hasLibrary libarchive'
    'libssl-dev|OpenSSL 3, with headers|hasLibrary libcrypto'
    'libxkbcommon-dev|libxkbcommon, with headers|hasLibrary xkbcommon'
    'libxkbcommon-x11-dev|libxkbcommon for X11, with headers|hasLibrary xkbcommon-x11'
    'libxcb1-dev|libxcb, with headers|hasLibrary xcb'
    'xkb-data|the keyboard database|test -r /usr/share/X11/xkb/rules/evdev'
    'shared-mime-info|the shared MIME database|test -r /usr/share/mime/globs2'
    'qt6-base-dev|Qt 6.4 or newer (Widgets, Network, DBus)|hasLibrary Qt6Widgets'
    'libgtest-dev|GoogleTest|hasLibrary gtest'
    'libgmock-dev|GoogleMock|hasLibrary gmock'
    'libseccomp-dev|libseccomp, with headers|hasLibrary libseccomp'
    'libfuse3-dev|libfuse 3, with headers|hasLibrary fuse3'
    'libbenchmark-dev|Google Benchmark|hasLibrary benchmark'
)
# What only saves time, and is done without where it cannot be had.
wishes=('ccache|ccache|command -v ccache' 'mold|mold|command -v mold')

# Sets `missing` to the entries of the arguments whose test fails.
findMissing() {
    local need
    missing=()
    for need in "$@"; do
        if ! ${need##*|} >/dev/null 2>&1; then
            missing+=("$need")
        fi
    done
}

isDebian() {
    command -v apt-get >/dev/null && command -v dpkg >/dev/null
}

# Runs a command with root's rights.
asRoot() {
    if ((EUID == 0)); then
        "$@"
    else
        sudo "$@"
    fi
}

# Fails where the packages cannot be installed, which is no end if they only save time.
installPackages() {
    local log status=0
    if ((EUID != 0)) && ! command -v sudo >/dev/null; then
        say "not root, and there is no sudo. As root: apt-get update && apt-get install $*"
        return 1
    fi
    say "installing $* (apt-get$( ((EUID == 0)) || printf ', with sudo'))"
    log=$(mktemp)
    {
        asRoot env DEBIAN_FRONTEND=noninteractive apt-get -q update &&
            asRoot env DEBIAN_FRONTEND=noninteractive apt-get -q -y \
                -o DPkg::Lock::Timeout=300 --no-install-recommends install "$@"
    } </dev/null >"$log" || status=$?
    if ((status != 0)); then
        tail -n 20 "$log" >&2
        say "apt-get failed with status $status"
    fi
    rm -f "$log"
    return "$status"
}

listNeeds() {
    local need rest
    say 'this is needed, and what is marked with * is missing:'
    for need in "${needs[@]}"; do
        rest=${need#*|}
        printf '  %s %-46s (Debian: %s)\n' \
            "$([[ " ${missing[*]} " == *"$need"* ]] && printf '*' || printf ' ')" \
            "${rest%%|*}" "${need%%|*}" >&2
    done
}

# Installs what is missing. Ends the program when something that is needed cannot be had.
setUp() {
    findMissing "${needs[@]}" "${wishes[@]}"
    if ((${#missing[@]} == 0)); then
        return
    fi
    if isDebian; then
        installPackages "${missing[@]%%|*}" || true
    fi
    findMissing "${needs[@]}"
    if ((${#missing[@]} != 0)); then
        listNeeds
        die 'install what is missing and start again'
    fi
}

# Configures build/PRESET unless that has been done, with further arguments for CMake.
configurePreset() {
    local preset=$1 folder="$root/build/$1" fresh=() log
    shift
    if [[ $# -eq 0 && $folder/build.ninja -nt $root/CMakePresets.json ]] &&
        grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"; then
        return
    fi
    # A folder that has been moved or copied from elsewhere is of no use.
    if [[ -e $folder/CMakeCache.txt ]] &&
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"; then
        fresh=(--fresh)
    fi
    say "configuring build/$preset"
    mkdir -p "$folder"
    log="$folder/configure.log"
    if ! (cd "$root" && cmake --preset "$preset" "${fresh[@]}" "$@") >"$log" 2>&1; then
        cat "$log" >&2
        die 'CMake failed'
    fi
}

# Builds targets (all of them when none is named) of build/PRESET. Silent when all is up to date.
buildTargets() {
    local folder="$root/build/$1"
    shift
    if [[ $(ninja -C "$folder" -n "$@") == *'no work to do.'* ]]; then
        return
    fi
    say "building $folder"
    ninja -C "$folder" "$@" >&2 || die 'the build failed'
}
