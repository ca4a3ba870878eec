#!/bin/sh
# Runs the fleet playbook against this host alone (local connection) with a
# stand-in collector that writes a fixed JSON inventory, or with the real
# collector when one is given, and checks the fetched file.
# Usage: fleet_playbook.sh FLEET_DIR JSON_SCHEMA [SORVIK MODULE_DIR]
set -u
fleet=$1 schema=$2 sorvik=${3:-} moddir=${4:-}
if ! command -v ansible-playbook >/dev/null 2>&1; then
    echo "SKIP: ansible-playbook is not installed (Debian package ansible-core)"
    exit 77
fi
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
if [ -z "$sorvik" ]; then
    sorvik=$work/sorvik moddir=$work
    cat >"$sorvik" <<'STUB'
#!/bin/sh
# Stand-in collector: honours -outc and exits 1 as a run with devices does.
for a in "$@"; do case $a in -outc=*) out=${a#-outc=} ;; esac; done
[ -f icconfig_new.json ] || exit 2
cat >"$out" <<'JSON'
{
	"UpdatableComponentsInventory":	{
		"OperatingSystem":	{ "name": "Stub", "osVendor": "Stub", "osCode": "stub", "osArch": "x86_64",
			"majorVersion": "1", "minorVersion": "0" },
		"System":	{ "systemID": "STUB" },
		"UpdateableComponent":	[{ "name": "BIOS", "componentType": "BIOS", "componentID": "159",
			"version": "1.0.0", "fqdd": "BIOS.System.1" }]
	}
}
JSON
exit 1
STUB
    chmod +x "$sorvik"
    echo '{}' >"$work/icconfig_new.json"
fi
printf 'localhost ansible_connection=local ansible_python_interpreter=%s\n' "$( [ -x /usr/bin/python3 ] && echo /usr/bin/python3 || command -v python3)" >"$work/hosts"
ANSIBLE_LOCAL_TEMP=$work/tmp ANSIBLE_REMOTE_TEMP=$work/tmp ANSIBLE_NOCOLOR=1 \
    ansible-playbook -i "$work/hosts" "$fleet/sorvik-inventory.yml" \
    -e ansible_become=false -e "sorvik_bin=$sorvik" -e "sorvik_module_dir=$moddir" \
    -e "sorvik_fetch_dir=$work/out" >"$work/log" 2>&1
rc=$?
failed=0 passed=0
if [ $rc -eq 0 ]; then passed=$((passed + 1)); else failed=$((failed + 1)); echo "FAIL: playbook exit $rc"; cat "$work/log"; fi
if [ -s "$work/out/localhost.json" ]; then passed=$((passed + 1)); else failed=$((failed + 1)); echo "FAIL: nothing fetched"; fi
if ls /tmp/sorvik-*.json >/dev/null 2>&1 && [ -n "$(find /tmp -maxdepth 1 -name 'sorvik-*.json' -newer "$work/hosts")" ]; then
    failed=$((failed + 1)); echo "FAIL: the remote temporary file was left behind"
else passed=$((passed + 1)); fi
if python3 -c 'import jsonschema' 2>/dev/null; then
    if python3 -c 'import json,sys,jsonschema; jsonschema.validate(json.load(open(sys.argv[1])), json.load(open(sys.argv[2])))' \
        "$work/out/localhost.json" "$schema"; then passed=$((passed + 1)); else failed=$((failed + 1)); echo "FAIL: schema"; fi
fi
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
