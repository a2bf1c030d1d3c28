# shellcheck shell=sh disable=SC2154 # the names are those of the scripts that read this, and of ../debian.sh
# Sourced by check: a 32-bit Wine in a root of its own, and what the programs in it need around them.

# need_wine: wine_root becomes the folder of a Debian for i386 with Wine; made once and kept.
need_wine() {
    wine_root=$qt_cache/wine-$(sha256sum <packaging/windows/wine_root | cut -c 1-12)
    [ ! -e "$wine_root/completa" ] || return 0
    say "making a 32-bit Debian with Wine, once; kept in $wine_root"
    rm -rf "$wine_root"
    if ! packaging/windows/wine_root "$wine_root" "$(mirror)" >"$build_log" 2>&1; then
        tail -n 15 "$build_log" >&2
        fail "The 32-bit Debian could not be made (is the network there?)."
    fi
}

# start_wine FOLDER: hands and eyes from outside, and a fresh Windows in FOLDER, which must lie under /tmp. The mounts are
# in the caller's own name space. In FOLDER, the command em_wine runs others in the root. Wine's own chatter is left out,
# its libraries for web pages and .NET too.
start_wine() {
    wine=$1
    mkdir -p "$wine/fora" "$wine/papeis" "$wine/temp" "$wine_root$PWD" "$wine_root$qt"
    mount -t proc proc "$wine_root/proc"
    mount --rbind /dev "$wine_root/dev"
    mount --bind /tmp "$wine_root/tmp"
    mount --bind "$PWD" "$wine_root$PWD"
    mount --bind "$qt" "$wine_root$qt"
    cat >"$wine/em_wine" <<END
#!/bin/sh
exec chroot '$wine_root' env -i HOME='$wine' PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=pt_BR.UTF-8 DISPLAY='$DISPLAY' \\
    WINEARCH=win32 WINEPREFIX='$wine/wine' WINEDEBUG=-all WINEPATH='$(windows_path "$PWD/build/windows/bibliotecas")' \\
    WINEDLLOVERRIDES="mscoree,mshtml=\${WINE_OVERRIDE:+;\$WINE_OVERRIDE}" \\
    PLANILHA_FORA='$(windows_path "$wine/fora")' PLANILHA_PAPEIS='$wine/papeis' \\
    PLANILHA_NO_PLACEMENT=1 \${WINE_VARIABLES-} sh -c 'cd "\$0" && exec "\$@"' '$PWD' "\$@"
END
    chmod +x "$wine/em_wine"
    PATH=$wine:$PATH
    setsid python3 packaging/windows/fora.py "$wine/fora" &
    outside=$!
    {
        em_wine wineboot -i
        em_wine wine reg add 'HKCU\Software\Wine' /v Version /d win10 /f
        wine_environment TEMP "$(windows_path "$wine/temp")"
        wine_environment TMP "$(windows_path "$wine/temp")"
        em_wine wineserver -w
    } >"$wine/wineboot.log" 2>&1
}

# wine_environment NAME VALUE: for what Wine does not take over from the environment outside.
wine_environment() {
    em_wine wine reg add 'HKCU\Environment' /v "$1" /d "$2" /f
}

# windows_path FILE: as the programs under Wine know it.
windows_path() {
    printf 'Z:%s' "$1" | tr / '\\'
}

stop_wine() {
    em_wine wineserver -k >/dev/null 2>&1 || true
    kill -- "-$outside" 2>/dev/null || true
}
