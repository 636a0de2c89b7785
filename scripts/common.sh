# What the scripts share: installing what is missing, configuring and building. Sourced, not run.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

say() { printf '\n== %s\n' "$*"; }

# Installs the Debian packages named that are not there. Says what is missing where it cannot.
need() {
    local missing=()
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    say "installing ${missing[*]}"
    if ! { "${as_root[@]}" apt-get update -qq &&
        DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq \
            --no-install-recommends "${missing[@]}" >/dev/null; }; then
        echo "These Debian packages are needed and could not be installed: ${missing[*]}" >&2
        exit 1
    fi
}

# The same for packages with a program of a given name, which may have come from elsewhere:
# need_program PROGRAM PACKAGE
need_program() { command -v "$1" >/dev/null || need "$2"; }

# PostgreSQL's programs, without the server that the packages would set up: tests run one of their
# own.
need_postgresql() {
    command -v psql >/dev/null && ls /usr/lib/postgresql/*/bin/initdb >/dev/null 2>&1 && return
    local settings=/etc/postgresql-common/createcluster.conf
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    need postgresql-common
    "${as_root[@]}" cp -p $settings $settings.before
    echo "create_main_cluster = false" | "${as_root[@]}" tee -a $settings >/dev/null
    # In a process of its own, since a failure ends it: the settings are put back in any case.
    local status=0
    (need postgresql) || status=$?
    "${as_root[@]}" mv $settings.before $settings
    [ $status -eq 0 ] || exit $status
}

# Options that put many sources into a compilation, as the presets do: half the time.
together="-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=48 -DTAVOLIN_PRECOMPILE=OFF"

# build FOLDER [CMAKE OPTION...]: configures and builds everything there.
build() {
    local folder=$1
    shift
    cmake -S . -B "$folder" -G Ninja "$@" >"$folder.log" 2>&1 ||
        { cat "$folder.log" >&2; echo "Configuring $folder failed." >&2; exit 1; }
    cmake --build "$folder" >"$folder.log" 2>&1 ||
        { cat "$folder.log" >&2; echo "Building $folder failed." >&2; exit 1; }
}
