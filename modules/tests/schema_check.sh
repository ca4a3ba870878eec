#!/bin/sh
# Validates every module's output, from a fake tree and from this machine,
# against the module document schema, and checks that markup characters in
# the fake tree's values survive. Usage: schema_check.sh STAGE_DIR SCHEMA
stage=$1 schema=$2
. "$(dirname "$0")/testlib.sh"
need xmllint "package libxml2-utils"
mkdir "$work/root" && cd "$work/root" || exit 1
pci() {  # address vendor device subvendor subdevice class [driver, from the same-named module]
    a=$1 d=sys/devices/pci0000:00/$1; shift
    mkdir -p "$d" sys/bus/pci/devices
    for f in vendor device subsystem_vendor subsystem_device class; do printf '0x%s\n' "$1" >"$d/$f"; shift; done
    ln -s "../../../devices/pci0000:00/$a" "sys/bus/pci/devices/$a"
    [ $# -gt 0 ] || return 0
    mkdir -p "sys/bus/pci/drivers/$1" "sys/module/$1"
    ln -s "../../../bus/pci/drivers/$1" "$d/driver"
    [ -e "sys/bus/pci/drivers/$1/module" ] || ln -s "../../../../module/$1" "sys/bus/pci/drivers/$1/module"
}
pci 0000:00:00.0 8086 2020 1028 0000 060000
pci 0000:00:17.0 8086 a182 1028 0716 010601 ahci
pci 0000:01:00.0 144d a808 144d a801 010802 nvme
pci 0000:3b:00.0 14e4 16d7 14e4 4140 020000 bnxt_en
pci 0000:3b:00.1 14e4 16d7 14e4 4140 020000 bnxt_en
printf '1.2.3-k&<x>"\n' >sys/module/bnxt_en/version
mkdir -p usr/share/misc proc/sys/kernel etc sys/class/dmi/id sys/class/nvme sys/class/block dev
printf '144d  Samsung\n\ta808  NVMe SSD Controller\n14e4  Broadcom & <Friends> "Inc"\n\t16d7  BCM57414 Ethernet\nC 06  Bridge\n\t00  Host bridge\n' \
    >usr/share/misc/pci.ids
printf '6.1.0-fake\n' >proc/sys/kernel/osrelease; printf 'x86_64\n' >proc/sys/kernel/arch
for s in 0 1; do printf 'processor\t: %s\nmodel name\t: CPU <8 cores> & more\nphysical id\t: %s\nmicrocode\t: 0x2007006\n\n' $s $s; done >proc/cpuinfo
printf 'NAME="Example & Linux"\nPRETTY_NAME="Example & Linux 9.4 <LTS>"\nID=example\nVERSION_ID="9.4"\nBUILD_ID=20240101\n' >etc/os-release
for kv in 'bios_vendor=Example "Firmware" & Co' bios_version=2.17.1 bios_date=03/14/2023 'product_sku=SKU=0A1B<x>'; do
    printf '%s\n' "${kv#*=}" >"sys/class/dmi/id/${kv%%=*}"; done
n=sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0
mkdir -p "$n"
printf 'Samsung SSD 970 & <PRO>\n' >"$n/model"
printf '1B2QEXP7\n' >"$n/firmware_rev"; printf '0000:01:00.0\n' >"$n/address"
ln -s "../../${n#sys/}" sys/class/nvme/nvme0
s=sys/devices/pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0
mkdir -p "$s/block/sda"
printf 'ATA     \n' >"$s/vendor"
printf 'Disk "X" & <Y>\n' >"$s/model"; printf 'D3MU\n' >"$s/rev"
ln -s ../../../0:0:0:0 "$s/block/sda/device"
ln -s "../../${s#sys/}/block/sda" sys/class/block/sda
# A network interface on a PCI function, unknown to the real ioctl, and a virtual one.
mkdir -p sys/class/net/svmfake0 sys/class/net/lo
ln -s ../../../devices/pci0000:00/0000:3b:00.0 sys/class/net/svmfake0/device

for dir in "$stage"/*/; do
    m=$(basename "$dir")
    [ -x "$dir/$m" ] || continue
    for where in fake live; do
        [ $where = fake ] && set -- --root "$work/root" || set --
        (cd "$dir" && "./$m" "$@" 2>/dev/null) >"$work/$m.$where.xml"
        if xmllint --schema "$schema" --noout "$work/$m.$where.xml" 2>"$work/x"; then ok; else
            bad "$m ($where) does not validate:"; cat "$work/x" "$work/$m.$where.xml"; fi
    done
done

value() { xmllint --xpath "string($2)" "$work/$1.fake.xml" 2>/dev/null; }  # module xpath
expect "pciinv device count" "$(value pciinv 'count(/SVMInventory/Device)')" 5
expect "pciinv escaped display" "$(value pciinv "/SVMInventory/Device[@enum='0000:3b:00.0']/@display")" \
    'Broadcom & <Friends> "Inc" BCM57414 Ethernet'
expect "pciinv escaped driver version" "$(value pciinv "//Device[@enum='0000:3b:00.1']/Application/@version")" '1.2.3-k&<x>"'
expect "pciinv kernel release for a module without version" \
    "$(value pciinv "//Device[@enum='0000:00:17.0']/Application/@version")" '6.1.0-fake'
expect "pciinv unbound function" "$(value pciinv "count(//Device[@enum='0000:00:00.0']/Application)")" 0
expect "storageinv disk model" "$(value storageinv "//Device[@FQDD='Disk.0000:00:17.0.ata-1']/@display")" 'Disk "X" & <Y>'
expect "storageinv nvme firmware" "$(value storageinv "//Device[@FQDD='NVMe.0000:01:00.0']/Application/@version")" 1B2QEXP7
expect "biosinv BIOS version" "$(value biosinv "//Device[@componentID='159']/Application[@componentType='BIOS']/@version")" 2.17.1
expect "biosinv system id" "$(value biosinv '/SVMInventory/System/@systemID')" 'SKU=0A1B<x>'
expect "osinv name" "$(value osinv '/SVMInventory/OperatingSystem/@name')" 'Example & Linux 9.4 <LTS>'
expect "osinv major" "$(value osinv '/SVMInventory/OperatingSystem/@majorVersion')" 9
expect "bmcinv failure" "$(value bmcinv "count(/SVMInventory/SPStatus[@result='false']/Message)")" 1
finish
