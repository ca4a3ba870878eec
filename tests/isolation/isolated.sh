#!/bin/sh
# Runs a command with a /var/lock and a System V IPC space of its own, as the
# isolated test programs do. Usage: isolated.sh <command...>
exec unshare --mount --ipc --propagation private \
    sh -c 'mount -t tmpfs -o mode=1777,nosuid,nodev sorvik-test /var/lock && exec "$@"' sh "$@"
