# Sourced by the module test scripts: result counting, a work directory, JSON and sysfs checks.
set -u
passed=0 failed=0
ok() { passed=$((passed + 1)); }
bad() { failed=$((failed + 1)); echo "FAIL: $*"; }
expect() { if [ "$2" = "$3" ]; then ok; else bad "$1: got [$2], expected [$3]"; fi; }  # what actual expected
need() { command -v "$1" >/dev/null 2>&1 || { echo "SKIP: $1 not installed ($2)"; exit 77; }; }
finish() { echo "$passed passed, $failed failed"; [ "$failed" -eq 0 ]; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM

json_check() {  # file schema: parses, and validates when python3 has jsonschema
    if python3 -c 'import json,sys; json.load(open(sys.argv[1]))' "$1" 2>"$work/x"; then ok; else bad "$1 does not parse:"; cat "$work/x"; fi
    python3 -c 'import jsonschema' 2>/dev/null || { echo "note: python3 jsonschema not installed; schema check skipped"; return 0; }
    if python3 -c 'import json,sys,jsonschema; jsonschema.validate(json.load(open(sys.argv[1])), json.load(open(sys.argv[2])))' \
        "$1" "$2" 2>"$work/x"; then ok; else bad "$1 against $2:"; cat "$work/x"; fi
}

# Every PCI device in the XML file is a function under /sys/bus/pci/devices,
# with the ids and address sysfs gives it.
hex4() { v=$(cat "$1" 2>/dev/null) || v=0x0000; printf '%s' "${v#0x}"; }
check_pci_against_sysfs() {  # file
    n=$(xmllint --xpath 'count(/SVMInventory/Device[@vendorID])' "$1") i=1
    while [ "$i" -le "$n" ]; do
        d="/SVMInventory/Device[@vendorID][$i]"; i=$((i + 1))
        a=$(xmllint --xpath "string($d/@enum)" "$1"); p=/sys/bus/pci/devices/$a
        if [ -z "$a" ] || [ ! -d "$p" ]; then bad "device $a is not under /sys/bus/pci/devices"; continue; fi
        bdf=$(printf '%x %x %x' "0x$(echo "$a" | cut -d: -f2)" "0x$(echo "$a" | cut -d: -f3 | cut -d. -f1)" "0x${a##*.}")
        expect "$a" "$(xmllint --xpath "concat($d/@vendorID,' ',$d/@deviceID,' ',$d/@subVendorID,' ',$d/@subDeviceID,' ',$d/@bus,' ',$d/@device,' ',$d/@function)" "$1")" \
            "$(hex4 "$p/vendor") $(hex4 "$p/device") $(hex4 "$p/subsystem_vendor") $(hex4 "$p/subsystem_device") $bdf"
    done
}
