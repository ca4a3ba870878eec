#!/bin/sh
# Runs the fleet playbook against this host alone (local connection) with a
# stand-in collector and checks that it fetches what the collector wrote.
# Usage: fleet_playbook.sh FLEET_DIR
fleet=$1
. "$(dirname "$0")/testlib.sh"
need ansible-playbook "Debian package ansible-core"
inventory='{"UpdatableComponentsInventory": {"System": {"systemID": "STUB"}}}'
# The stand-in honours -outc, needs the module directory's configuration in its
# working directory and exits 1, as a run that found devices does.
cat >"$work/sorvik" <<STUB
#!/bin/sh
for a in "\$@"; do case \$a in -outc=*) out=\${a#-outc=} ;; esac; done
[ -f icconfig_new.json ] || exit 2
echo '$inventory' >"\$out"
exit 1
STUB
chmod +x "$work/sorvik"
echo '{}' >"$work/icconfig_new.json"
py=/usr/bin/python3; [ -x $py ] || py=$(command -v python3)
echo "localhost ansible_connection=local ansible_python_interpreter=$py" >"$work/hosts"
if ANSIBLE_LOCAL_TEMP=$work/tmp ANSIBLE_REMOTE_TEMP=$work/tmp ANSIBLE_NOCOLOR=1 ansible-playbook -i "$work/hosts" \
    "$fleet/sorvik-inventory.yml" -e ansible_become=false -e "sorvik_bin=$work/sorvik" -e "sorvik_module_dir=$work" \
    -e "sorvik_fetch_dir=$work/out" >"$work/log" 2>&1; then ok; else bad "playbook failed"; cat "$work/log"; fi
expect "fetched inventory" "$(cat "$work/out/localhost.json" 2>/dev/null)" "$inventory"
if [ -z "$(find /tmp -maxdepth 1 -name 'sorvik-*.json' -newer "$work/hosts")" ]; then ok; else bad "the remote temporary file was left behind"; fi
finish
