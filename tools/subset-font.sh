#!/usr/bin/env bash
# Rebuilds resources/fonts/RobotoCondensed-Bold.ttf: Debian's Roboto Condensed Bold cut down to
# Latin-1 and common punctuation. The small font loads faster at start-up; other characters
# fall back to the system's fonts.
#   needs: fonts-roboto-unhinted python3-fonttools
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source=${1:-/usr/share/fonts/truetype/roboto/unhinted/RobotoCondensed-Bold.ttf}
python3 -m fontTools.subset "$source" \
  --unicodes="U+0020-007E,U+00A0-00FF,U+2010-2027,U+2030-203A,U+20AC,U+2122" \
  --layout-features='*' --name-IDs='*' --name-languages='*' \
  --output-file="$root/resources/fonts/RobotoCondensed-Bold.ttf"
