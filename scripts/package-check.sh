#!/bin/sh
# Builds the Debian package in build-package/ (Release, tests off, Debian's
# hardening flags), fails on any lintian error or warning, and unpacks it into
# a throwaway directory (never the machine's package database) to check that
# the programs and their manual pages are in it.
#   scripts/package-check.sh             build the package and check it
#   scripts/package-check.sh FILE.deb    check a package built elsewhere
set -eu
cd "$(dirname "$0")/.."
"$PWD/scripts/setup.sh"

dir=build-package
if [ $# -gt 0 ]; then
    deb=$1
    built=no
else
    built=yes
    # A fresh directory: CMake reads the flags below only when it first
    # configures one. dpkg-buildflags runs here, in the source directory, so
    # its -ffile-prefix-map keeps build paths out of the binaries.
    rm -rf "$dir"
    eval "$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --export=sh)"
    # CMake has no CPPFLAGS: the preprocessor flags (_FORTIFY_SOURCE) go with the compiler's.
    CFLAGS="$CPPFLAGS $CFLAGS" CXXFLAGS="$CPPFLAGS $CXXFLAGS" \
        cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DSORVIK_BUILD_TESTS=OFF >/dev/null
    cmake --build "$dir"
    (cd "$dir" && cpack -G DEB >/dev/null)
    set -- "$dir"/*.deb
    [ $# -eq 1 ] || { echo "package-check: expected one package in $dir, found: $*" >&2; exit 1; }
    deb=$1
fi
echo "== $deb"
dpkg-deb --info "$deb" control

status=0
fail() {
    echo "package-check: $*" >&2
    status=1
}

# Errors and warnings fail; information tags are shown.
echo "== lintian"
lintian --fail-on error,warning --display-info "$deb" || fail "lintian reports errors or warnings"

tree=$(mktemp -d /tmp/sorvik-package.XXXXXX)
trap 'rm -rf "$tree"' EXIT
dpkg-deb -x "$deb" "$tree"

# has_program <name> <man section>: the program in bin or sbin, runnable,
# with its compressed manual page.
has_program() {
    program=""
    for d in usr/bin usr/sbin; do
        [ -f "$tree/$d/$1" ] && program="$tree/$d/$1"
    done
    if [ -z "$program" ] || [ ! -x "$program" ]; then
        fail "no program $1 in usr/bin or usr/sbin"
        return
    fi
    page="$tree/usr/share/man/man$2/$1.$2.gz"
    if [ ! -f "$page" ]; then
        fail "no manual page usr/share/man/man$2/$1.$2.gz"
    elif ! gzip -t "$page"; then
        fail "usr/share/man/man$2/$1.$2.gz is not a gzip file"
    fi
    "$program" --help >/dev/null || fail "$1 --help failed"
}

echo "== contents"
has_program sorvik 8
upstream=$(dpkg-deb --field "$deb" Version | sed 's/-[^-]*$//')
"$tree/usr/sbin/sorvik" --version | grep -q "$upstream" || fail "sorvik --version does not say $upstream"

# sorvik-audit is checked when this build has it, or when the package holds it.
audit=no
if [ "$built" = yes ]; then
    ninja -C "$dir" -t targets all | grep -q '^sorvik-audit:' && audit=yes
fi
[ -e "$tree/usr/bin/sorvik-audit" ] || [ -e "$tree/usr/sbin/sorvik-audit" ] && audit=yes
if [ "$audit" = yes ]; then
    has_program sorvik-audit 1
else
    echo "(this build has no sorvik-audit: not checked)"
fi

# Every module the build made, beside the configuration that names them.
config="$tree/usr/libexec/sorvik/icconfig_new.json"
[ -f "$config" ] || fail "no usr/libexec/sorvik/icconfig_new.json"
if [ "$built" = yes ]; then
    for module in "$dir"/modules/stage/*/; do
        name=$(basename "$module")
        [ -x "$tree/usr/libexec/sorvik/$name/$name" ] || fail "no module usr/libexec/sorvik/$name/$name"
    done
fi

# The changelog names the package's version; the dependencies came from
# dpkg-shlibdeps.
changelog=$(find "$tree/usr/share/doc" -name 'changelog*.gz' | head -n 1)
if [ -z "$changelog" ]; then
    fail "no changelog in usr/share/doc"
else
    version=$(gzip -dc "$changelog" | dpkg-parsechangelog -l- -SVersion)
    [ "$version" = "$(dpkg-deb --field "$deb" Version)" ] ||
        fail "the changelog's version $version is not the package's"
fi
dpkg-deb --field "$deb" Depends | grep -q 'libc6 (>=' || fail "no versioned dependency on libc6"

# Nothing installed names the directory it was built in.
embedded=$(grep -rlF "$PWD/" "$tree" || true)
[ -z "$embedded" ] || fail "files naming $PWD/: $embedded"

if [ "$status" -eq 0 ]; then
    echo "package-check: $deb passes"
fi
exit "$status"
