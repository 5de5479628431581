# Sourced by the other scripts: installs what is missing on a Debian system and configures the build.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# install_packages PACKAGE...: with apt-get, through sudo when not root.
install_packages() {
    echo "quorlin: installing with apt-get: $*" >&2
    local sudo=
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    $sudo apt-get update -qq >&2
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" >&2
}

# missing COMMAND-OR-FILE=PACKAGE...: the packages of what is not there.
missing() {
    local item
    for item in "$@"; do
        local what=${item%%=*} package=${item#*=}
        if [ "${what#/}" != "$what" ]; then
            [ -e "$what" ] || echo "$package"
        else
            command -v "$what" >/dev/null || echo "$package"
        fi
    done
}

# need COMMAND-OR-FILE=PACKAGE...: installs the packages of what is not there; does nothing when all is.
need() {
    local packages
    packages=$(missing "$@")
    [ -z "$packages" ] || install_packages $packages
}

compiler=(g++=g++ cmake=cmake ninja=ninja-build)
test_library=(/usr/include/gtest/gtest.h=libgtest-dev /usr/lib/python3/dist-packages/jsonschema=python3-jsonschema)
batch_tools=(parallel=parallel python3=python3)
# What more of quorlin-batch is tested with, where it can be had: the page in a browser, jobs over ssh. Where services
# run, openssh-server would start one: there it has to be installed by hand.
batch_extras=(chromium=chromium)
[ -d /run/systemd/system ] || batch_extras+=(/usr/sbin/sshd=openssh-server)

need_compiler() {
    need "${compiler[@]}"
}

need_test_library() {
    need "${test_library[@]}"
}

# All that ./scripts/test needs; says first what is going to be installed.
need_for_tests() {
    local packages extras item
    packages=$(missing "${compiler[@]}" "${test_library[@]}" "${batch_tools[@]}")
    extras=$(missing "${batch_extras[@]}")
    [ -z "$packages" ] || echo "quorlin: these packages are going to be installed:" $packages >&2
    [ -z "$extras" ] || echo "quorlin: these as well (without them tests of quorlin-batch are skipped):" $extras >&2
    [ -z "$packages" ] || install_packages $packages
    for item in "${batch_extras[@]}"; do
        (need "$item") || echo "quorlin: no ${item#*=}: its tests are skipped" >&2
    done
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
