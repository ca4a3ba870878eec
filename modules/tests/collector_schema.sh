#!/bin/sh
# Runs the collector over the bundled modules from the staged module directory
# and validates its XML (UTF-8 and UTF-16), error and JSON documents against
# the inventory schemas; its PCI devices must match sysfs.
# Usage: collector_schema.sh SORVIK STAGE_DIR SCHEMA_DIR IPMISIM_RUN
sorvik=$1 stage=$2 schemas=$3 simulator=$4
. "$(dirname "$0")/testlib.sh"
need xmllint "package libxml2-utils"
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
    "$("$stage/pciinv/pciinv" 2>/dev/null | xmllint --xpath 'count(/SVMInventory/Device[Application])' -)"
check_pci_against_sysfs "$work/inv.xml"
run utf16 -outc="$work/inv16.xml"
expect "UTF-16 byte-order mark" "$(head -c 2 "$work/inv16.xml" | od -An -tx1 | tr -d ' ')" fffe
validate "$work/inv16.xml"
run json -outf=JSON -outc="$work/inv.json"
json_check "$work/inv.json" "$schemas/inventory.schema.json"
finish
