# shellcheck shell=sh disable=SC2154 # the names are those of the scripts that read this, and of ../debian.sh
# Sourced by make_installer and check: what is built for Windows, here on Debian 12. Qt comes from Debian's own source
# package; it is built once and kept, in a folder whose name has the hash of source, recipe and compiler.

packages_to_cross="g++-mingw-w64-i686-posix cmake ninja-build pkg-config dpkg-dev qt6-base-dev qt6-base-dev-tools
    librsvg2-bin icoutils"
qt_cache=${PLANILHA_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/planilha-de-bombas/windows}

# The compilers are those of the toolchain file alone, whatever the machine's own builds are asked to use.
unset CC CXX CFLAGS CXXFLAGS CPPFLAGS LDFLAGS

# need_debian: the recipe is that of one Debian, whose Qt and compiler it names.
need_debian() {
    # shellcheck disable=SC1091 # the system's own
    suite=$(. /etc/os-release && echo "${VERSION_CODENAME-}")
    [ "$suite" = bookworm ] && [ "$(dpkg --print-architecture)" = amd64 ] ||
        fail "The programs for Windows are built on Debian 12 (bookworm, amd64); this is ${suite:-something else}." \
            "On another system: debootstrap bookworm in a folder, and this command in a chroot there."
}

# mirror: the one that this machine uses.
mirror() {
    used=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Label: Debian' | head -n 1)
    [ -n "$used" ] || fail "apt names no Debian mirror here: enter one in its list of sources."
    echo "$used"
}

# own_apt COMMAND...: apt-get with lists of its own, so that the machine's list of sources stays as it is.
own_apt() {
    apt-get -q -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$qt_cache/sources" \
        -o Dir::State::Lists="$qt_cache/lists" -o Dir::Cache::SrcPkgCache= -o Dir::Cache::PkgCache= \
        -o APT::Sandbox::User=root "$@"
}

# get_qt_source: qt_source becomes the .dsc of the version whose host tools are installed here.
get_qt_source() {
    qt_version=$(dpkg-query -W -f '${source:Version}' qt6-base-dev-tools)
    qt_source=$qt_cache/source/qt6-base_$qt_version.dsc
    [ ! -e "$qt_source" ] || return 0
    say "fetching the source of Qt $qt_version"
    mkdir -p "$qt_cache/sources" "$qt_cache/lists/partial" "$qt_cache/source"
    {
        echo "Types: deb-src"
        echo "URIs: $(mirror)"
        echo "Suites: bookworm bookworm-updates"
        echo "Components: main"
        echo "Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg"
    } >"$qt_cache/sources/debian.sources"
    if ! { own_apt update && cd "$qt_cache/source" && own_apt source --download-only "qt6-base=$qt_version"; } \
        >"$build_log" 2>&1 </dev/null; then
        tail -n 15 "$build_log" >&2
        fail "The source of Qt could not be fetched (is the network there?)."
    fi
    cd "$OLDPWD"
}

# need_qt: qt becomes the folder of the built Qt.
need_qt() {
    get_qt_source
    qt_recipe=$({
        dpkg-query -W g++-mingw-w64-i686-posix mingw-w64-i686-dev
        cat "$qt_source" packaging/windows/qt_options packaging/windows/i686-w64-mingw32.cmake
    } | sha256sum | cut -c 1-12)
    qt=$qt_cache/qt-$qt_version-$qt_recipe
    [ ! -e "$qt/complete" ] || return 0
    say "building Qt $qt_version for Windows, once (20 minutes and more); kept in $qt"
    work=$qt_cache/build-$qt_recipe
    # A build that was interrupted goes on where it stood.
    if [ ! -e "$work/configured" ]; then
        rm -rf "$work" "$qt"
        mkdir -p "$work"
        if ! dpkg-source --no-check -x "$qt_source" "$work/source" >"$build_log" 2>&1 </dev/null; then
            tail -n 15 "$build_log" >&2
            fail "The source of Qt could not be unpacked."
        fi
        # shellcheck disable=SC2046 # a list of options without blanks
        if ! cmake -S "$work/source" -B "$work/build" -G Ninja --install-prefix "$qt" \
            --toolchain "$PWD/packaging/windows/i686-w64-mingw32.cmake" $(cat packaging/windows/qt_options) \
            >"$build_log" 2>&1; then
            tail -n 40 "$build_log" >&2
            fail "Configuring Qt failed."
        fi
        date >"$work/configured"
    fi
    build_quietly "$work/build" || fail "Qt was not built."
    cmake --install "$work/build" >"$build_log" 2>&1 || fail "Qt could not be stored in $qt."
    date >"$qt/complete"
    rm -rf "$work"
}

# build_quietly FOLDER [TARGET...]: builds there; says every tenth, and what went wrong.
build_quietly() {
    folder=$1
    shift
    rm -f "$build_log.failed"
    { nice -n 5 cmake --build "$folder" -j "${PLANILHA_JOBS:-$(nproc)}" ${1:+--target "$@"} 2>&1 || echo failed >"$build_log.failed"; } |
        tee "$build_log" | sed -un 's/^\[\([0-9]*\)\/\([0-9]*\)\].*/\1 \2/p' | say_tenths
    [ -e "$build_log.failed" ] || return 0
    rm -f "$build_log.failed"
    grep -E 'error|FAILED' "$build_log" >&2 || tail -n 30 "$build_log" >&2
    return 1
}

# build_windows [TARGET...]: builds these in build/windows.
build_windows() {
    need_qt
    PLANILHA_WINDOWS_QT=$qt
    export PLANILHA_WINDOWS_QT
    if [ ! -e build/windows/build.ninja ] || [ "$(cat build/windows/qt 2>/dev/null)" != "$qt" ]; then
        say "configuring for Windows"
        rm -rf build/windows
        if ! cmake --preset windows >"$build_log" 2>&1; then
            cat "$build_log" >&2
            fail "Configuring the build failed."
        fi
        echo "$qt" >build/windows/qt
    fi
    say "building for Windows"
    build_quietly build/windows "$@" || fail "The build failed."
}

# stage FOLDER FILE...: programs and libraries with all that they load, stripped.
stage() {
    folder=$1
    shift
    rm -rf "$folder"
    mkdir -p "$folder/platforms"
    cp "$@" "$qt/bin/Qt6Core.dll" "$qt/bin/Qt6Gui.dll" "$qt/bin/Qt6Widgets.dll" "$qt/bin/Qt6PrintSupport.dll" "$folder"
    cp "$qt/plugins/platforms/qwindows.dll" "$folder/platforms"
    for library in libgcc_s_dw2-1.dll libstdc++-6.dll libwinpthread-1.dll; do
        found=$(i686-w64-mingw32-g++-posix -print-file-name=$library)
        [ -e "$found" ] || found=/usr/i686-w64-mingw32/lib/$library
        cp "$found" "$folder"
    done
    find "$folder" -name '*.dll' -o -name '*.exe' | xargs -d '\n' i686-w64-mingw32-strip --strip-unneeded
}
