#!/bin/sh
# pciinv on this machine reports exactly the functions under
# /sys/bus/pci/devices, each with the ids sysfs gives.
# Usage: pciinv_live.sh PCIINV
set -u
pciinv=$1
command -v xmllint >/dev/null 2>&1 || { echo "SKIP: xmllint not installed (package libxml2-utils)"; exit 77; }
[ -d /sys/bus/pci/devices ] || { echo "SKIP: no /sys/bus/pci/devices on this machine"; exit 77; }
out=$(mktemp) || exit 1
trap 'rm -f "$out"' EXIT INT TERM
"$pciinv" >"$out" 2>/dev/null
failed=0 passed=0
hex4() { v=$(cat "$1" 2>/dev/null) || v=0x0000; printf '%s' "${v#0x}"; }

count=$(xmllint --xpath 'count(/SVMInventory/Device)' "$out")
present=$(ls /sys/bus/pci/devices | wc -l)
if [ "$count" -eq "$present" ]; then passed=$((passed + 1)); else
    failed=$((failed + 1)); echo "FAIL: $count devices reported, $present present"; fi

for path in /sys/bus/pci/devices/*; do
    [ -e "$path" ] || continue
    a=$(basename "$path")
    bus=$(printf '%x' "0x$(echo "$a" | cut -d: -f2)")
    dev=$(printf '%x' "0x$(echo "$a" | cut -d: -f3 | cut -d. -f1)")
    fn=$(echo "$a" | cut -d. -f2)
    want="$(hex4 "$path/vendor") $(hex4 "$path/device") $(hex4 "$path/subsystem_vendor") $(hex4 "$path/subsystem_device") $bus $dev $fn"
    got=$(xmllint --xpath "concat(/SVMInventory/Device[@enum='$a']/@vendorID, ' ', /SVMInventory/Device[@enum='$a']/@deviceID, ' ', /SVMInventory/Device[@enum='$a']/@subVendorID, ' ', /SVMInventory/Device[@enum='$a']/@subDeviceID, ' ', /SVMInventory/Device[@enum='$a']/@bus, ' ', /SVMInventory/Device[@enum='$a']/@device, ' ', /SVMInventory/Device[@enum='$a']/@function)" "$out")
    if [ "$got" = "$want" ]; then passed=$((passed + 1)); else
        failed=$((failed + 1)); echo "FAIL: $a: reported [$got], sysfs [$want]"; fi
    drv=""
    [ -L "$path/driver" ] && drv=$(basename "$(readlink "$path/driver")")
    gotdrv=$(xmllint --xpath "string(/SVMInventory/Device[@enum='$a']/Application[@componentType='DRVR']/@display)" "$out")
    if [ -z "$drv" ] && [ -n "$gotdrv" ]; then
        failed=$((failed + 1)); echo "FAIL: $a has no driver but $gotdrv is reported"
    elif [ -n "$gotdrv" ] && [ "$gotdrv" != "$drv" ]; then
        failed=$((failed + 1)); echo "FAIL: $a: driver $gotdrv reported, $drv bound"
    else passed=$((passed + 1)); fi
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
