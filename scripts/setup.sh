# Sourced by the other scripts: installs what is missing on a Debian system and configures the build.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# install_packages PACKAGE...: with apt-get, through sudo when not root.
install_packages() {
    echo "quorlin: installing $* with apt-get" >&2
    local sudo=
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    $sudo apt-get update -qq >&2
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" >&2
}

# need COMMAND-OR-FILE=PACKAGE...: installs the packages of what is not there; does nothing when all is.
need() {
    local missing=() item
    for item in "$@"; do
        local what=${item%%=*} package=${item#*=}
        if [ "${what#/}" != "$what" ]; then
            [ -e "$what" ] || missing+=("$package")
        else
            command -v "$what" >/dev/null || missing+=("$package")
        fi
    done
    [ ${#missing[@]} -eq 0 ] || install_packages "${missing[@]}"
}

need_compiler() {
    need g++=g++ cmake=cmake ninja=ninja-build
}

need_test_library() {
    need /usr/include/gtest/gtest.h=libgtest-dev
}

# What quorlin-batch needs; and, where it can be had, what more of it is tested with: the page in a browser, jobs over ssh.
need_batch_tools() {
    need parallel=parallel python3=python3
    (need chromium=chromium) || echo "quorlin: no chromium: the page of quorlin-batch is not tested" >&2
    # Where services run, the package would start one: there it has to be installed by hand.
    [ -d /run/systemd/system ] || (need /usr/sbin/sshd=openssh-server) ||
        echo "quorlin: no openssh-server: jobs over ssh are not tested" >&2
}

# build PRESET TARGET [CMAKE-ARGUMENT...]: configures and builds; its log is shown when it fails.
build() {
    local preset=$1 target=$2
    shift 2
    local directory=build
    [ "$preset" = release ] || directory=build-$preset
    mkdir -p "$directory"
    # A directory that was configured by hand keeps its generator: CMake refuses to change it.
    local generator
    generator=$(sed -n 's/^CMAKE_GENERATOR:INTERNAL=//p' "$directory/CMakeCache.txt" 2>/dev/null) || true
    [ -z "$generator" ] || set -- -G "$generator" "$@"
    echo "quorlin: building ($preset; log in $directory/build.log)" >&2
    if ! { cmake --preset "$preset" "$@" && cmake --build --preset "$preset" --target "$target" --parallel "$(nproc)"; } \
        >"$directory/build.log" 2>&1; then
        cat "$directory/build.log" >&2
        echo "quorlin: the build failed" >&2
        return 1
    fi
}
