#!/bin/sh
# pciinv on this machine reports exactly the functions under
# /sys/bus/pci/devices, with the ids sysfs gives and their bound drivers.
# Usage: pciinv_live.sh PCIINV
. "$(dirname "$0")/testlib.sh"
need xmllint "package libxml2-utils"
[ -d /sys/bus/pci/devices ] || { echo "SKIP: no /sys/bus/pci/devices on this machine"; exit 77; }
"$1" >"$work/out.xml" 2>/dev/null
expect "device count" "$(xmllint --xpath 'count(/SVMInventory/Device)' "$work/out.xml")" "$(ls /sys/bus/pci/devices | wc -l)"
check_pci_against_sysfs "$work/out.xml"
for p in /sys/bus/pci/devices/*; do
    [ -e "$p" ] || continue
    drv=""; [ -L "$p/driver" ] && drv=$(basename "$(readlink "$p/driver")")
    got=$(xmllint --xpath "string(/SVMInventory/Device[@enum='${p##*/}']/Application[@componentType='DRVR']/@display)" "$work/out.xml")
    [ -z "$got" ] || expect "${p##*/} driver" "$got" "$drv"
done
finish
