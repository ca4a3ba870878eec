#!/bin/sh
# Runs the collector over the bundled modules from the staged module
# directory and validates its XML (UTF-8 and UTF-16), error and JSON
# documents against the inventory schemas.
# Usage: collector_schema.sh SORVIK STAGE_DIR SCHEMA_DIR
set -u
sorvik=$1 stage=$2 schemas=$3
command -v xmllint >/dev/null 2>&1 || { echo "SKIP: xmllint not installed (package libxml2-utils)"; exit 77; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
failed=0 passed=0
ok() { passed=$((passed + 1)); }
bad() { failed=$((failed + 1)); echo "FAIL: $*"; }

run() {  # name options...
    name=$1; shift
    (cd "$stage" && "$sorvik" "$@" >"$work/$name.stdout" 2>"$work/$name.stderr" </dev/null)
    rc=$?
    if [ $rc -le 1 ]; then ok; else bad "$name: exit status $rc"; cat "$work/$name.stderr"; fi
}

run xml -outc="$work/inv.xml" -enc=UTF-8 -logc="$work/err.xml"
if xmllint --schema "$schemas/inventory.xsd" --noout "$work/inv.xml" 2>"$work/x"; then ok; else bad "XML inventory:"; cat "$work/x"; fi
if [ -f "$work/err.xml" ]; then
    if xmllint --schema "$schemas/inventory.xsd" --noout "$work/err.xml" 2>"$work/x"; then ok; else bad "error document:"; cat "$work/x"; fi
fi
# Every PCI function with a bound driver that pciinv reports reaches the inventory.
want=$("$stage/pciinv/pciinv" 2>/dev/null | xmllint --xpath 'count(/SVMInventory/Device[Application])' -)
got=$(xmllint --xpath "count(/SVMInventory/Device[Application/@componentType='DRVR'])" "$work/inv.xml")
if [ "$got" = "$want" ]; then ok; else bad "$got driver records in the inventory, pciinv reports $want"; fi
# Every PCI device in the inventory is a function sysfs has, with the ids and
# address sysfs gives it.
hex4() { v=$(cat "$1" 2>/dev/null) || v=0x0000; printf '%s' "${v#0x}"; }
count=$(xmllint --xpath 'count(/SVMInventory/Device[@vendorID])' "$work/inv.xml")
i=1
while [ "$i" -le "$count" ]; do
    dev="/SVMInventory/Device[@vendorID][$i]"
    a=$(xmllint --xpath "string($dev/@enum)" "$work/inv.xml")
    path=/sys/bus/pci/devices/$a
    if [ -z "$a" ] || [ ! -d "$path" ]; then bad "inventory device $i ($a) is not under /sys/bus/pci/devices"; i=$((i + 1)); continue; fi
    want="$(hex4 "$path/vendor") $(hex4 "$path/device") $(hex4 "$path/subsystem_vendor") $(hex4 "$path/subsystem_device")"
    want="$want $(printf '%x %x %x' "0x$(echo "$a" | cut -d: -f2)" "0x$(echo "$a" | cut -d: -f3 | cut -d. -f1)" "0x$(echo "$a" | cut -d. -f2)")"
    got=$(xmllint --xpath "concat($dev/@vendorID, ' ', $dev/@deviceID, ' ', $dev/@subVendorID, ' ', $dev/@subDeviceID, ' ', $dev/@bus, ' ', $dev/@device, ' ', $dev/@function)" "$work/inv.xml")
    if [ "$got" = "$want" ]; then ok; else bad "$a: inventory [$got], sysfs [$want]"; fi
    i=$((i + 1))
done

run utf16 -outc="$work/inv16.xml"
if [ "$(head -c 2 "$work/inv16.xml" | od -An -tx1 | tr -d ' ')" = "fffe" ]; then ok; else bad "UTF-16 file without byte-order mark"; fi
if xmllint --schema "$schemas/inventory.xsd" --noout "$work/inv16.xml" 2>"$work/x"; then ok; else bad "UTF-16 inventory:"; cat "$work/x"; fi

run json -outf=JSON -outc="$work/inv.json"
if python3 -c 'import json,sys; json.load(open(sys.argv[1]))' "$work/inv.json" 2>"$work/x"; then ok; else bad "JSON does not parse:"; cat "$work/x"; fi
if python3 -c 'import jsonschema' 2>/dev/null; then
    if python3 -c 'import json,sys,jsonschema; jsonschema.validate(json.load(open(sys.argv[1])), json.load(open(sys.argv[2])))' \
        "$work/inv.json" "$schemas/inventory.schema.json" 2>"$work/x"; then ok; else bad "JSON inventory:"; cat "$work/x"; fi
else
    echo "note: python3 jsonschema not installed; JSON schema check skipped"
fi
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
