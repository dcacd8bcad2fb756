# shellcheck shell=bash
# To be sourced: `clean COMMAND...` runs it knowing nothing of this build, but for the compiler's cache.
# shellcheck disable=SC2034
compiler_cache=$(command -v ccache || true)
clean() {
    local kept=(PATH=/usr/local/bin:/usr/bin:/bin HOME="$HOME" LC_ALL=C.UTF-8) name
    for name in CCACHE_DIR DISPLAY XDG_RUNTIME_DIR QT_QPA_PLATFORM; do
        [[ -v $name ]] && kept+=("$name=${!name}")
    done
    env -i "${kept[@]}" "$@"
}
