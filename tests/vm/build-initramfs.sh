#!/bin/sh
# Builds the guest's initramfs: busybox, dash as /bin/sh, ethtool, nvme and
# tpm2_getcap (with the TPM library's device transport), the staged
# collector with its modules and every shared library they need, the IPMI,
# NVMe, e1000e, SCSI disk, megaraid_sas and mptsas kernel modules of the
# unpacked Debian kernel with their dependencies, and the guest's init.
# Usage: build-initramfs.sh KERNEL_TREE STAGE_DIR OUT.cpio.gz
set -eu
tree=$1 stage=$2 out=$3
here=$(cd "$(dirname "$0")" && pwd)
version=$(ls "$tree/lib/modules")
root=$(mktemp -d /tmp/sorvik-vm-root.XXXXXX)
trap 'rm -rf "$root"' EXIT

mkdir -p "$root/bin" "$root/sbin" "$root/usr/bin" "$root/usr/sbin" "$root/proc" "$root/sys" "$root/dev" \
    "$root/tmp" "$root/run/lock" "$root/etc" "$root/opt" "$root/lib/modules/$version"
mkdir -p "$root/var" && ln -s ../run/lock "$root/var/lock"
cp /bin/busybox "$root/bin/busybox"
for applet in $("$root/bin/busybox" --list); do
    [ -e "$root/bin/$applet" ] || ln -s busybox "$root/bin/$applet"
done
# The module tools the collector calls, by the names it calls them.
for tool in lsmod modprobe rmmod insmod; do
    rm -f "$root/bin/$tool"
    ln -s /bin/busybox "$root/sbin/$tool"
done

# Programs with their shared libraries.
copy_with_libs() {  # file destination
    [ -e "$root$2" ] || cp "$1" "$root$2"
    ldd "$1" 2>/dev/null | awk '/=>/ { print $3 } /^\t\// { print $1 }' | while read -r lib; do
        [ -n "$lib" ] && [ -f "$lib" ] || continue
        mkdir -p "$root$(dirname "$lib")"
        [ -e "$root$lib" ] || cp -L "$lib" "$root$lib"
    done
}
rm -f "$root/bin/sh"
copy_with_libs /bin/dash /bin/dash
ln -s dash "$root/bin/sh"
copy_with_libs /usr/sbin/ethtool /usr/sbin/ethtool
copy_with_libs /usr/sbin/nvme /usr/sbin/nvme
copy_with_libs /usr/bin/tpm2 /usr/bin/tpm2
ln -s tpm2 "$root/usr/bin/tpm2_getcap"
# Loaded by name at run time, so ldd does not list it.
for lib in /usr/lib/x86_64-linux-gnu/libtss2-tcti-device.so.0 /lib/x86_64-linux-gnu/libtss2-tcti-device.so.0; do
    [ -e "$lib" ] || continue
    mkdir -p "$root$(dirname "$lib")"
    copy_with_libs "$lib" "$lib"
    break
done
mkdir -p "$root/opt/sorvik"
cp -r "$stage/." "$root/opt/sorvik/"
for program in "$root"/opt/sorvik/sbin/* "$root"/opt/sorvik/libexec/sorvik/*/*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    copy_with_libs "$program" "${program#"$root"}"
done
cp /etc/os-release "$root/etc/os-release"
# pci.ids for the PCI module's names, when the host has it.
for ids in /usr/share/misc/pci.ids /usr/share/hwdata/pci.ids; do
    [ -f "$ids" ] && mkdir -p "$root$(dirname "$ids")" && cp "$ids" "$root$ids"
done

# Kernel modules and what they depend on.
depmod -b "$tree" "$version"
wanted="ipmi_msghandler ipmi_devintf ipmi_si acpi_ipmi nvme e1000e sd_mod megaraid_sas mptsas"
for module in $wanted; do
    modprobe -d "$tree" -S "$version" --show-depends "$module" | awk '/^insmod/ { print $2 }'
done | sort -u | while read -r ko; do
    rel=${ko#$tree}
    mkdir -p "$root$(dirname "$rel")"
    cp "$ko" "$root$rel"
done
cp "$tree/lib/modules/$version"/modules.builtin* "$tree/lib/modules/$version/modules.order" "$root/lib/modules/$version/"
depmod -b "$root" "$version"

cp "$here/guest-init.sh" "$root/init"
chmod +x "$root/init"
(cd "$root" && find . | cpio -o -H newc --quiet) | gzip -1 > "$out"
