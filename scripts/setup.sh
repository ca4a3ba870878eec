#!/bin/sh
# Installs every Debian package the build, the tests and the benchmarks need.
# Safe to run again: it does nothing when everything is already installed.
set -eu
packages="cmake ninja-build g++ clang libclang-rt-14-dev clang-format pkg-config libxml2-dev libxml2-utils libcjson-dev
libgtest-dev libgmock-dev libbenchmark-dev pciutils pci.ids
python3 python3-jsonschema groff-base ansible-core
libcli11-dev libsqlite3-dev libpq-dev nettle-dev lintian dpkg-dev file git postgresql-15 time"
missing=""
for p in $packages; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
if [ "$(id -u)" -ne 0 ]; then
    echo "setup: these packages are missing:$missing; run this script as root" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
# The fleet tests start PostgreSQL servers of their own from postgresql-15's
# binaries; the package must not create a system cluster, whose start would
# need a running service manager on a fresh machine.
case " $missing " in *" postgresql-15 "*)
    apt-get install -y -qq --no-install-recommends postgresql-common
    sed -i 's/^#* *create_main_cluster *=.*/create_main_cluster = false/' /etc/postgresql-common/createcluster.conf
    ;;
esac
# shellcheck disable=SC2086
apt-get install -y -qq --no-install-recommends $missing
