#!/usr/bin/env bash
# Installs the built program into a temporary root and checks that the desktop entry,
# the icons and the project file's type are where a desktop looks for them, that the
# entry passes desktop-file-validate (when desktop-file-utils is there), and that the
# type database built from it gives .qmk files and files that start "dbdb" the type.
#
#   install_test.sh BUILD-DIR
set -euo pipefail
build=$1
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

DESTDIR=$root cmake --install "$build" --prefix /usr >/dev/null
share=$root/usr/share
failed=0
for f in bin/quillmark share/applications/quillmark.desktop \
         share/icons/hicolor/scalable/apps/quillmark.svg \
         share/icons/hicolor/scalable/mimetypes/application-x-quillmark-project.svg \
         share/mime/packages/quillmark.xml; do
  if [ ! -f "$root/usr/$f" ]; then
    echo "not installed: $f"
    failed=1
  fi
done
[ -x "$root/usr/bin/quillmark" ] || { echo "the program is not executable"; failed=1; }
# No cache is made under DESTDIR: that is the package's work on the target machine.
[ ! -e "$share/mime/mime.cache" ] || { echo "a MIME cache was made under DESTDIR"; failed=1; }

grep -qx 'Exec=quillmark %f' "$share/applications/quillmark.desktop" ||
  { echo "the entry does not open the file it is given"; failed=1; }
grep -qx 'MimeType=application/x-quillmark-project;' "$share/applications/quillmark.desktop" ||
  { echo "the entry does not claim project files"; failed=1; }

if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate "$share/applications/quillmark.desktop" || failed=1
else
  echo "desktop-file-validate not found (desktop-file-utils): the entry's form is not checked"
fi

if command -v update-mime-database >/dev/null; then
  update-mime-database "$share/mime"
  grep -q '^50:application/x-quillmark-project:\*\.qmk$' "$share/mime/globs2" ||
    { echo "*.qmk is not application/x-quillmark-project"; failed=1; }
  grep -q 'application/x-quillmark-project' "$share/mime/magic" ||
    { echo "the project file's first bytes do not name its type"; failed=1; }
else
  echo "update-mime-database not found (shared-mime-info): the type is not checked"
fi

if command -v xmllint >/dev/null; then
  xmllint --noout "$share/icons/hicolor/scalable/apps/quillmark.svg" || failed=1
fi
exit $failed
