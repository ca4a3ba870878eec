#!/bin/sh
# What the real-kernel test needs beyond scripts/setup.sh: QEMU, busybox,
# kmod, cpio, ethtool, the software TPM for QEMU's TPM device, the NVMe and
# TPM tools the guest shows its own view with, and the Debian kernel package
# unpacked (never installed) into /var/cache/sorvik-vm/kernel. Quick when
# everything is there.
set -eu
"$(dirname "$0")/setup.sh"
need=""
for pair in qemu-system-x86_64:qemu-system-x86 busybox:busybox-static depmod:kmod cpio:cpio ethtool:ethtool \
    swtpm:swtpm swtpm_setup:swtpm-tools nvme:nvme-cli tpm2_getcap:tpm2-tools; do
    command -v "${pair%%:*}" >/dev/null 2>&1 || [ -x "/usr/sbin/${pair%%:*}" ] || need="$need ${pair#*:}"
done
if [ -n "$need" ]; then
    apt-get update -q >/dev/null
    # shellcheck disable=SC2086
    DEBIAN_FRONTEND=noninteractive apt-get install -y -q $need >/dev/null
fi
cache=/var/cache/sorvik-vm
if [ ! -d "$cache/kernel/boot" ]; then
    mkdir -p "$cache"
    package=$(apt-cache depends linux-image-amd64 | awk '/Depends: linux-image-[0-9]/ { print $2; exit }')
    (cd "$cache" && apt-get download -q "$package" >/dev/null 2>&1)
    rm -rf "$cache/kernel"
    dpkg-deb -x "$cache/$package"_*.deb "$cache/kernel"
fi
