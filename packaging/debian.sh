# shellcheck shell=sh disable=SC2034,SC2154 # the names are those of the scripts that read this
# Sourced by run and check: what they need on a Debian 12 machine, and how it gets there.

packages_to_build="g++ cmake ninja-build pkg-config qt6-base-dev unixodbc-dev libcups2-dev libxcb1-dev"
packages_to_run="qt6-qpa-plugins qt6-translations-l10n libqt6svg6 fonts-liberation odbc-mariadb mariadb-server-core
    mariadb-client-core libcups2"
packages_to_tour="xvfb openbox xdotool"
packages_to_package="dpkg-dev file"
packages_to_test="mdbtools poppler-utils cups-daemon cups-client python3 libsqlite3-dev"

# say TEXT...: what is being done, with the seconds since the start.
started_at=$(date +%s)
say() {
    printf '[%3d s] %s\n' "$(($(date +%s) - started_at))" "$*"
}

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

# need_packages PACKAGE...: installs those that are missing, as root or with sudo.
need_packages() {
    missing=''
    for package in "$@"; do
        dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    as_root=''
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "These packages are missing, and there is neither root nor sudo here:" \
            "   $missing" "Ask whoever runs this machine for:" "    apt-get install --no-install-recommends$missing"
        as_root=sudo
    fi
    say "installing:$missing"
    # A service that a package brings is not started: the program and its tests start servers of their own.
    if ! { $as_root apt-get -q update && $as_root env DEBIAN_FRONTEND=noninteractive RUNLEVEL=1 \
        apt-get -q install -y --no-install-recommends $missing; } >"$build_log" 2>&1; then
        tail -n 15 "$build_log" >&2
        fail "The packages could not be installed (is the network there?). Install them by hand and start again:" \
            "    apt-get install --no-install-recommends$missing"
    fi
}

# build_preset PRESET [TARGET...]: configures and builds, quiet unless it fails.
build_preset() {
    preset=$1
    shift
    # A build folder configures itself again when a CMakeLists.txt changes; the presets it does not know.
    if [ ! -e "build/$preset/build.ninja" ] || [ -n "$(find CMakePresets.json -newer "build/$preset/build.ninja")" ]; then
        say "configuring (preset $preset)"
        if ! cmake --preset "$preset" >"$build_log" 2>&1; then
            cat "$build_log" >&2
            fail "Configuring the build failed."
        fi
    fi
    say "building (preset $preset)"
    if [ -t 1 ]; then
        cmake --build --preset "$preset" ${1:+--target "$@"} || fail "The build failed."
        return 0
    fi
    rm -f "$build_log.failed"
    { cmake --build --preset "$preset" ${1:+--target "$@"} 2>&1 || echo failed >"$build_log.failed"; } |
        tee "$build_log" | sed -un 's/^\[\([0-9]*\)\/\([0-9]*\)\].*/\1 \2/p' | say_tenths
    if [ -e "$build_log.failed" ]; then
        rm -f "$build_log.failed"
        grep -E 'error|FAILED' "$build_log" >&2 || tail -n 30 "$build_log" >&2
        fail "The build failed."
    fi
}

# say_tenths: reads "done all" lines and says every tenth of a long work.
say_tenths() {
    tenth=0
    while read -r made all; do
        if [ "$all" -ge 20 ] && [ $((made * 10 / all)) -gt $tenth ]; then
            tenth=$((made * 10 / all))
            say "  $made of $all"
        fi
    done
}
