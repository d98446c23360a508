#!/usr/bin/env bash
# Installs the build into a temporary prefix and validates what a desktop installs from it.
# Usage: check_install.sh BUILD_DIR
set -euo pipefail
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null

id=io.github.vantorel.Vantorel
share=$prefix/share
expected=(
  bin/vantorel bin/vantorel-cli
  share/applications/$id.desktop share/metainfo/$id.metainfo.xml share/mime/packages/$id.xml
  share/icons/hicolor/scalable/apps/$id.svg share/icons/hicolor/16x16/apps/$id.png
  share/icons/hicolor/48x48/apps/$id.png share/icons/hicolor/256x256/apps/$id.png
  share/man/man1/vantorel-cli.1 share/bash-completion/completions/vantorel-cli
)
for file in "${expected[@]}"; do
  [ -s "$prefix/$file" ] || { echo "not installed: $file" >&2; exit 1; }
done
[ -x "$prefix/bin/vantorel-cli" ] && "$prefix/bin/vantorel-cli" --version | grep -qx 'vantorel-cli 1.4.3'

desktop-file-validate "$share/applications/$id.desktop"
grep -qx 'MimeType=application/x-korvath-weapon;' "$share/applications/$id.desktop"
appstreamcli validate --no-net "$share/metainfo/$id.metainfo.xml"
xmllint --noout "$share/mime/packages/$id.xml" "$share/icons/hicolor/scalable/apps/$id.svg"
grep -q 'pattern="\*.wepn" case-sensitive="false"' "$share/mime/packages/$id.xml"
# The PNGs are what their folder names say.
for size in 16 48 256; do
  head -c 24 "$share/icons/hicolor/${size}x${size}/apps/$id.png" | od -An -tx1 | tr -d ' \n' \
    | grep -q "$(printf '%08x%08x' "$size" "$size")\$" || { echo "wrong PNG size: $size" >&2; exit 1; }
done
# The man page formats without warnings; the completion is valid bash.
[ -z "$(groff -man -ww -z -Tutf8 "$share/man/man1/vantorel-cli.1" 2>&1)" ]
bash -n "$share/bash-completion/completions/vantorel-cli"
echo "installed and valid: ${#expected[@]} files"
