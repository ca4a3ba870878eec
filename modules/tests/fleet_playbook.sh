#!/bin/sh
# Runs the fleet playbook against this host alone (local connection) with a
# stand-in collector writing a fixed JSON inventory, or with the real one when
# given, and checks the fetched file.
# Usage: fleet_playbook.sh FLEET_DIR JSON_SCHEMA [SORVIK MODULE_DIR]
fleet=$1 schema=$2 sorvik=${3:-} moddir=${4:-}
. "$(dirname "$0")/testlib.sh"
need ansible-playbook "Debian package ansible-core"
if [ -z "$sorvik" ]; then
    sorvik=$work/sorvik moddir=$work
    cat >"$sorvik" <<'STUB'
#!/bin/sh
# Stand-in collector: honours -outc and exits 1 as a run with devices does.
for a in "$@"; do case $a in -outc=*) out=${a#-outc=} ;; esac; done
[ -f icconfig_new.json ] || exit 2
cat >"$out" <<'JSON'
{"UpdatableComponentsInventory": {
  "OperatingSystem": {"name": "Stub", "osVendor": "Stub", "osCode": "stub", "osArch": "x86_64", "majorVersion": "1", "minorVersion": "0"},
  "System": {"systemID": "STUB"},
  "UpdateableComponent": [{"name": "BIOS", "componentType": "BIOS", "componentID": "159", "version": "1.0.0", "fqdd": "BIOS.System.1"}]}}
JSON
exit 1
STUB
    chmod +x "$sorvik"
    echo '{}' >"$work/icconfig_new.json"
fi
py=/usr/bin/python3; [ -x $py ] || py=$(command -v python3)
echo "localhost ansible_connection=local ansible_python_interpreter=$py" >"$work/hosts"
if ANSIBLE_LOCAL_TEMP=$work/tmp ANSIBLE_REMOTE_TEMP=$work/tmp ANSIBLE_NOCOLOR=1 ansible-playbook -i "$work/hosts" \
    "$fleet/sorvik-inventory.yml" -e ansible_become=false -e "sorvik_bin=$sorvik" -e "sorvik_module_dir=$moddir" \
    -e "sorvik_fetch_dir=$work/out" >"$work/log" 2>&1; then ok; else bad "playbook failed"; cat "$work/log"; fi
if [ -s "$work/out/localhost.json" ]; then ok; else bad "nothing fetched"; fi
if [ -z "$(find /tmp -maxdepth 1 -name 'sorvik-*.json' -newer "$work/hosts")" ]; then ok; else bad "the remote temporary file was left behind"; fi
json_check "$work/out/localhost.json" "$schema"
finish
