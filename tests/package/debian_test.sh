#!/usr/bin/env bash
# Installs the packages in a layer over this system, uses them, and removes them without a trace.
# Needs a mount namespace of its own, which takes the layer away with it:
#   unshare --mount debian_test.sh PACKAGES
set -euo pipefail
packages=$(realpath "$1")

layer=$(mktemp -d)
trap 'umount -R "$layer" 2>/dev/null; rmdir "$layer"' EXIT
mount -t tmpfs kelsave-packages "$layer"
mkdir "$layer/upper" "$layer/work" "$layer/root"
mount -t overlay kelsave-packages "$layer/root" \
  -o lowerdir=/,upperdir="$layer/upper",workdir="$layer/work"
mount -t proc proc "$layer/root/proc"
mount --bind /dev "$layer/root/dev"
mkdir "$layer/root/kelsave"
cp "$packages"/*.deb "$layer/root/kelsave"

chroot "$layer/root" bash -euo pipefail -s <<'INSIDE'
cd /kelsave
files() { find /etc /opt /usr -print | sort; }
files >before
dpkg -i ./*.deb >log || { cat log; exit 1; }

# The programs, the documents, and a copy of the example host against the installed library.
[ "$(kelcalc -e '2 3 + # ')" = ' 5.000000' ]
compound_check --help >help
zcat /usr/share/man/man1/kelcalc.1.gz | grep -q kelcalc
[ -f /usr/share/doc/kelsave/language.md ]
[ -f /usr/share/doc/kelsave/api/html/index.html ]
cp -r /usr/share/doc/kelsave/examples/scene_host copied
cmake -S copied -B copied_built >log
cmake --build copied_built >log || { cat log; exit 1; }
copied_built/scene_host . >log || { cat log; exit 1; }
compound_check scene.kel

dpkg -P libkelsave-dev kelcalc kelsave-doc libkelsave0 >log || { cat log; exit 1; }
files >after
diff before after
INSIDE
echo "The packages were installed, used and removed without a trace."
