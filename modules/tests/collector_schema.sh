#!/bin/sh
# pciinv on this machine reports exactly the functions under /sys/bus/pci/devices,
# with the ids and bound drivers sysfs gives. The collector, run over the bundled
# modules from the staged module directory, writes XML (UTF-8 and UTF-16), error
# and JSON documents valid against the inventory schemas, with those PCI devices.
# Usage: collector_schema.sh SORVIK STAGE_DIR SCHEMA_DIR IPMISIM_RUN
sorvik=$1 stage=$2 schemas=$3 simulator=$4
. "$(dirname "$0")/testlib.sh"
need xmllint "package libxml2-utils"
"$stage/pciinv/pciinv" >"$work/pci.xml" 2>/dev/null
expect "pciinv device count" "$(xmllint --xpath 'count(/SVMInventory/Device)' "$work/pci.xml")" \
    "$(ls /sys/bus/pci/devices 2>/dev/null | wc -l)"
check_pci_against_sysfs "$work/pci.xml"
for p in /sys/bus/pci/devices/*; do
    got=$(xmllint --xpath "string(//Device[@enum='${p##*/}']/Application[@componentType='DRVR']/@display)" "$work/pci.xml")
    [ -z "$got" ] || expect "${p##*/} driver" "$got" "$(basename "$(readlink "$p/driver")")"
done

run() {  # name options...
    name=$1; shift
    (cd "$stage" && sh "$simulator" "$sorvik" "$@" >"$work/$name.out" 2>"$work/$name.err" </dev/null)
    rc=$?
    if [ $rc -le 1 ]; then ok; else bad "$name: exit status $rc"; cat "$work/$name.err"; fi
}
validate() {  # file
    if xmllint --schema "$schemas/inventory.xsd" --noout "$1" 2>"$work/x"; then ok; else bad "$1:"; cat "$work/x"; fi
}
run xml -outc="$work/inv.xml" -enc=UTF-8 -logc="$work/err.xml"
validate "$work/inv.xml"
[ ! -f "$work/err.xml" ] || validate "$work/err.xml"
# Every PCI function with a bound driver that pciinv reports reaches the inventory.
expect "driver records" "$(xmllint --xpath "count(/SVMInventory/Device[Application/@componentType='DRVR'])" "$work/inv.xml")" \
    "$(xmllint --xpath 'count(/SVMInventory/Device[Application])' "$work/pci.xml")"
check_pci_against_sysfs "$work/inv.xml"
run utf16 -outc="$work/inv16.xml"
expect "UTF-16 byte-order mark" "$(head -c 2 "$work/inv16.xml" | od -An -tx1 | tr -d ' ')" fffe
validate "$work/inv16.xml"
run json -outf=JSON -outc="$work/inv.json"
json_check "$work/inv.json" "$schemas/inventory.schema.json"
finish
