#!/usr/bin/env bash
# Two rules of the source tree, each failure printed:
# - the floors of the library: a file may include headers of its own folder
#   and of folders on lower floors only;
# - velk.h includes every public header (all but those whose opening comment
#   says they are internal).
set -euo pipefail
root=${1:-$(dirname "$0")/..}
declare -A floor=([core]=0 [sys]=1 [linalg]=1 [scalar]=2 [io]=3 [matrix]=4 [container]=5 [editor]=6)
bad=0
for dir in "${!floor[@]}"; do
  for file in "$root/$dir"/*.h "$root/$dir"/*.cc; do
    [ -e "$file" ] || continue
    while IFS= read -r target; do
      [ "$target" = "$dir" ] && continue
      [ -n "${floor[$target]+x}" ] || continue
      if [ "${floor[$target]}" -ge "${floor[$dir]}" ]; then
        echo "$dir/$(basename "$file") includes $target/ (floor ${floor[$target]} from floor ${floor[$dir]})"
        bad=1
      fi
    done < <(sed -n 's|^[[:space:]]*#[[:space:]]*include[[:space:]]*"\([a-z]*\)/.*|\1|p' "$file")
  done
done
for dir in "${!floor[@]}"; do
  for header in "$root/$dir"/*.h; do
    [ -e "$header" ] || continue
    head -n 3 "$header" | grep -q 'Internal to' && continue
    name="$dir/$(basename "$header")"
    if ! grep -q "^#include \"$name\"" "$root/velk.h"; then
      echo "velk.h does not include $name"
      bad=1
    fi
  done
done
exit $bad
