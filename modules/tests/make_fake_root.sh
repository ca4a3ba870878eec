#!/bin/sh
# Creates a fake system tree under $1 for running the modules with --root:
# PCI functions (bound, built-in, unbound), a PCI id database, NVMe and SATA
# storage, DMI, /proc files and os-release. Values carry XML markup
# characters on purpose.
set -eu
root=$1
mkdir -p "$root"
cd "$root"

pci() {  # address vendor device subvendor subdevice class
    d=sys/devices/pci0000:00/$1
    mkdir -p "$d" sys/bus/pci/devices
    printf '%s\n' "$2" >"$d/vendor"
    printf '%s\n' "$3" >"$d/device"
    printf '%s\n' "$4" >"$d/subsystem_vendor"
    printf '%s\n' "$5" >"$d/subsystem_device"
    printf '%s\n' "$6" >"$d/class"
    ln -s "../../../devices/pci0000:00/$1" "sys/bus/pci/devices/$1"
}
bind() {  # address driver [module]
    mkdir -p "sys/bus/pci/drivers/$2"
    ln -s "../../../bus/pci/drivers/$2" "sys/devices/pci0000:00/$1/driver"
    if [ -n "${3:-}" ] && [ ! -e "sys/bus/pci/drivers/$2/module" ]; then
        mkdir -p "sys/module/$3"
        ln -s "../../../../module/$3" "sys/bus/pci/drivers/$2/module"
    fi
}

pci 0000:00:00.0 0x8086 0x2020 0x1028 0x0000 0x060000
pci 0000:00:17.0 0x8086 0xa182 0x1028 0x0716 0x010601
pci 0000:01:00.0 0x144d 0xa808 0x144d 0xa801 0x010802
pci 0000:3b:00.0 0x14e4 0x16d7 0x14e4 0x4140 0x020000
pci 0000:3b:00.1 0x14e4 0x16d7 0x14e4 0x4140 0x020000
bind 0000:00:17.0 ahci ahci
bind 0000:01:00.0 nvme nvme
bind 0000:3b:00.0 bnxt_en bnxt_en
bind 0000:3b:00.1 bnxt_en bnxt_en
printf '1.2.3-k&<x>"\n' >sys/module/bnxt_en/version

mkdir -p usr/share/misc proc/sys/kernel etc
cat >usr/share/misc/pci.ids <<'IDS'
144d  Samsung Electronics Co Ltd
	a808  NVMe SSD Controller SM981/PM981/PM983
14e4  Broadcom & <Friends> "Inc"
	16d7  BCM57414 NetXtreme-E 10Gb/25Gb RDMA Ethernet Controller
8086  Intel Corporation
	a182  C620 Series Chipset Family SATA Controller [AHCI mode]
C 06  Bridge
	00  Host bridge
IDS
printf '6.1.0-fake\n' >proc/sys/kernel/osrelease
printf 'x86_64\n' >proc/sys/kernel/arch
cat >proc/cpuinfo <<'CPU'
processor	: 0
model name	: Example CPU <8 cores> & more
physical id	: 0
microcode	: 0x2007006

processor	: 1
model name	: Example CPU <8 cores> & more
physical id	: 1
microcode	: 0x2007006

CPU
cat >etc/os-release <<'OS'
NAME="Example & Linux"
PRETTY_NAME="Example & Linux 9.4 <LTS>"
ID=example
VERSION_ID="9.4"
BUILD_ID=20240101
OS

mkdir -p sys/class/dmi/id
printf 'Example "Firmware" & Co\n' >sys/class/dmi/id/bios_vendor
printf '2.17.1\n' >sys/class/dmi/id/bios_version
printf '03/14/2023\n' >sys/class/dmi/id/bios_date
printf 'SKU=0A1B<x>\n' >sys/class/dmi/id/product_sku

# NVMe controller and a SATA disk.
n=sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0
mkdir -p "$n" sys/class/nvme sys/class/block
printf 'Samsung SSD 970 & <PRO>\n' >"$n/model"
printf '1B2QEXP7\n' >"$n/firmware_rev"
printf '0000:01:00.0\n' >"$n/address"
ln -s ../../devices/pci0000:00/0000:01:00.0/nvme/nvme0 sys/class/nvme/nvme0
s=sys/devices/pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0
mkdir -p "$s/block/sda"
printf 'ATA     \n' >"$s/vendor"
printf 'Disk "X" & <Y>\n' >"$s/model"
printf 'D3MU\n' >"$s/rev"
ln -s ../../../0:0:0:0 "$s/block/sda/device"
ln -s ../../devices/pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0/block/sda sys/class/block/sda

# A network interface on a PCI function (the real ioctl knows no such
# interface, so nicinv reports nothing for it) and a virtual one.
mkdir -p sys/class/net/svmfake0 sys/class/net/lo
ln -s ../../../devices/pci0000:00/0000:3b:00.0 sys/class/net/svmfake0/device

# An IPMI device record without a device node: bmcinv asks the library.
mkdir -p dev
