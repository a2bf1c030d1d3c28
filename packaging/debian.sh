# shellcheck shell=sh disable=SC2034,SC2154 # the names are those of the scripts that read this
# Sourced by the commands of this tree: what each needs, how it gets there, and the build.

# What is needed, by the names of thing() below.
things_to_build="compiler cmake ninja qt odbc cups xcb_headers"
things_to_run="xcb svg portuguese fonts"
things_to_serve="server client driver"
things_to_tour="xvfb openbox xdotool"
things_to_test="qt_test mdb_export pdftotext cupsd lp python3"

# say TEXT...: what is being done, with the seconds since the start.
started_at=$(date +%s)
say() {
    printf '[%3d s] %s\n' "$(($(date +%s) - started_at))" "$*"
}

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

has_tool() {
    (
        PATH=$PATH:/usr/local/sbin:/usr/sbin
        command -v "$1" >/dev/null
    )
}

# first_file PATTERN...: the first file of such a name below the folders that CMake searches.
first_file() (
    IFS=':;'
    for prefix in ${CMAKE_PREFIX_PATH-} /usr/local /usr; do
        for pattern in "$@"; do
            for file in "$prefix"/$pattern; do
                if [ -e "$file" ]; then
                    echo "$file"
                    exit
                fi
            done
        done
    done
    exit 1
)

# first_in_lib PATTERN...: the same, in each kind of library folder.
first_in_lib() (
    for file in "$@"; do
        set -- "$@" "lib/*-linux-*/$file" "lib64/$file" "lib/$file"
        shift
    done
    first_file "$@"
)

# at_least VERSION WANTED: compares the first two numbers.
at_least() {
    echo "$1 $2" | awk '{ split($1, is, "."); split($2, wanted, ".")
        exit is[1] + 0 < wanted[1] + 0 || (is[1] + 0 == wanted[1] + 0 && is[2] + 0 < wanted[2] + 0) }'
}

compiles() {
    echo '#include <concepts>' | ${CXX:-c++} -std=c++20 -fsyntax-only -x c++ - 2>/dev/null
}

has_cmake() {
    version=$(cmake --version 2>/dev/null | sed -n '1s/.* //p')
    what="CMake 3.25 or newer${version:+ (here is $version)}"
    at_least "${version:-0}" 3.25
}

qt_wanted=6.4
has_qt() {
    config=$(first_in_lib cmake/Qt6/Qt6ConfigVersionImpl.cmake cmake/Qt6/Qt6ConfigVersion.cmake) || return 1
    version=$(sed -n 's/^set(PACKAGE_VERSION "\([0-9.]*\)").*/\1/p' "$config")
    what="Qt $qt_wanted or newer with its Widgets and PrintSupport (here is Qt $version)"
    at_least "${version:-0}" $qt_wanted && has_qt_part Widgets && has_qt_part PrintSupport
}

has_qt_part() {
    first_in_lib "cmake/Qt6$1/Qt6$1Config.cmake" >/dev/null
}

has_qt_plugin() {
    first_in_lib "qt6/plugins/$1" "qt-6/plugins/$1" "../plugins/$1" >/dev/null
}

has_font() {
    [ -n "$(find /usr/share/fonts /usr/local/share/fonts "$HOME/.fonts" "$HOME/.local/share/fonts" \
        -name 'LiberationSans-Regular.*' 2>/dev/null | head -n 1)" ]
}

has_driver() {
    first_in_lib odbc/libmaodbc.so libmaodbc.so mariadb/libmaodbc.so >/dev/null ||
        grep -Eiqs '^\[.*(mariadb|mysql)' "${ODBCSYSINI:-/etc}/${ODBCINSTINI:-odbcinst.ini}" "$HOME/.odbcinst.ini"
}

# thing NAME: whether it is here, however it came. Sets what it is called and the Debian packages that bring it, of which
# the first that the system offers is taken.
thing() {
    from=''
    case $1 in
        compiler) what='a C++20 compiler (GCC 12 or newer)' from=g++ && compiles ;;
        cmake) from=cmake && has_cmake ;;
        ninja) what=Ninja from=ninja-build && has_tool ninja ;;
        qt) what="Qt $qt_wanted or newer with its headers" from=qt6-base-dev && has_qt ;;
        qt_test) what="the Test library of Qt" from=qt6-base-dev && has_qt_part Test ;;
        odbc) what='unixODBC with its headers' from=unixodbc-dev && first_file include/sql.h >/dev/null ;;
        cups) what='the CUPS library with its headers' from=libcups2-dev && first_file include/cups/cups.h >/dev/null ;;
        xcb_headers) what='the XCB library with its headers' from=libxcb1-dev && first_file include/xcb/xcb.h >/dev/null ;;
        xcb) what="Qt's platform plugin for X11 (libqxcb.so)" from='qt6-qpa-plugins libqt6gui6' &&
            has_qt_plugin platforms/libqxcb.so ;;
        wayland) what="Qt's platform plugin for Wayland" from=qt6-wayland && has_qt_plugin 'platforms/libqwayland*.so' ;;
        svg) what="Qt's SVG image plugin (libqsvg.so)" from='qt6-svg-plugins libqt6svg6' &&
            has_qt_plugin imageformats/libqsvg.so ;;
        portuguese) what="Qt's Portuguese texts (qtbase_pt_BR.qm)" from=qt6-translations-l10n &&
            { first_file 'share/qt*6/translations/qtbase_pt_BR.qm' translations/qtbase_pt_BR.qm >/dev/null ||
                first_in_lib qt6/translations/qtbase_pt_BR.qm >/dev/null; } ;;
        fonts) what='the Liberation fonts' from='fonts-liberation fonts-liberation2' && has_font ;;
        server) what='the MariaDB server (mariadbd, mariadb-install-db)' from='mariadb-server-core' &&
            has_tool mariadbd && has_tool mariadb-install-db ;;
        client) what='the MariaDB client (mariadb)' from='mariadb-client-core' && has_tool mariadb ;;
        driver) what='the MariaDB driver for ODBC (libmaodbc.so)' from=odbc-mariadb && has_driver ;;
        xvfb) what='the virtual display Xvfb' from=xvfb && has_tool Xvfb ;;
        openbox) what='the window manager openbox' from=openbox && has_tool openbox ;;
        xdotool) what=xdotool from=xdotool && has_tool xdotool ;;
        mdb_export) what='mdbtools (mdb-export)' from=mdbtools && has_tool mdb-export ;;
        pdftotext) what="poppler's tools (pdftotext)" from=poppler-utils && has_tool pdftotext ;;
        cupsd) what='the CUPS server (cupsd)' from=cups-daemon && has_tool cupsd ;;
        lp) what="CUPS's client (lpstat)" from=cups-client && has_tool lpstat ;;
        python3) what='Python 3' from=python3 && has_tool python3 ;;
        benchmark) what='the benchmark library' from=libbenchmark-dev && first_file include/benchmark/benchmark.h >/dev/null ;;
        *) what=$1 from=$1 && dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null | grep -qx installed ;; # a package
    esac
}

# look_for THING...: what of it is missing, in people's words and as packages.
look_for() {
    missing=''
    packages=''
    for name in "$@"; do
        thing "$name" && continue
        missing="$missing
    $what"
        package=$(offered $from)
        case " $packages " in
            *" $package "*) ;;
            *) packages="$packages $package" ;;
        esac
    done
}

# offered PACKAGE...: the first that the system knows.
offered() {
    for package in "$@"; do
        if apt-cache show "$package" 2>/dev/null | grep -q .; then
            echo "$package"
            return
        fi
    done
    echo "$1"
}

# need THING...: installs what is missing, as root or with sudo. Where that cannot be, says what is missing and ends.
need() {
    look_for "$@"
    [ -n "$missing" ] || return 0
    has_tool apt-get || fail "This is missing here:$missing" "There is no apt-get to install it with. Install it as this system" \
        "does, and start again. What lies in a folder of its own is found by CMAKE_PREFIX_PATH and PATH."
    as_root=''
    if [ "$(id -u)" -ne 0 ]; then
        has_tool sudo || fail "This is missing, and there is neither root nor sudo here:$missing" \
            "Ask whoever runs this machine for:" "    apt-get install --no-install-recommends$packages"
        as_root=sudo
    fi
    say "looking for packages"
    $as_root apt-get -q update >"$build_log" 2>&1 || apt_refuses
    look_for "$@" # What a system offers may be known only now.
    case $packages in
        *' qt6-base-dev'*)
            version=$(apt-cache policy qt6-base-dev 2>/dev/null | sed -n 's/^ *Candidate: \([0-9.]*\).*/\1/p')
            [ -z "$version" ] || at_least "$version" $qt_wanted ||
                fail "This needs Qt $qt_wanted or newer; the system's packages bring Qt $version."
            ;;
    esac
    say "installing:$packages"
    # shellcheck disable=SC2086 # a list of words
    $as_root sh packaging/install_quietly $packages >>"$build_log" 2>&1 || apt_refuses
    look_for "$@"
    [ -z "$missing" ] || fail "This is still missing after the packages were installed:$missing"
}

apt_refuses() {
    fail "apt-get could not install this, which is missing:$missing" "What it said is in $build_log (is the network there?)." \
        "Install it and start again:" "    apt-get install --no-install-recommends$packages"
}

# build_preset PRESET [TARGET...]: configures and builds, quiet unless it fails.
build_preset() {
    preset=$1
    shift
    # A folder that was moved or copied with what was built in it begins afresh.
    if [ -e "build/$preset/CMakeCache.txt" ] &&
        ! grep -qFx "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "build/$preset/CMakeCache.txt"; then
        rm -rf "build/$preset"
    fi
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
