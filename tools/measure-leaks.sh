#!/usr/bin/env bash
# Valgrind's leak check on a scripted match of about ten seconds on a virtual
# display: the view turns to the ship and a shot is fired at the centre every
# half second, then Escape. Prints valgrind's leak summary; the full report is
# kept in the given file.
#   tools/measure-leaks.sh [build-dir] [report-file]
# What Mesa's driver keeps for the process, through frames of a library that
# is already unloaded at exit, is suppressed by tools/valgrind-mesa.supp.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
report=$(realpath -m "${2:-$build/valgrind-game.txt}")
[[ -x $build/quorbane ]] || { echo "no $build/quorbane: build first" >&2; exit 1; }
command -v valgrind >/dev/null || { echo "valgrind is not installed (apt-get install valgrind)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/one-run.sh" <<'INNER'
#!/usr/bin/env bash
# $1 game, $2 report, $3 suppressions, $4 console
valgrind --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite --num-callers=40 \
  --suppressions="$3" --log-file="$2" "$1" >"$4" 2>&1 &
game=$!
wid=$(timeout 600 xdotool search --sync --onlyvisible --name '^Quorbane$' 2>/dev/null | head -n 1)
[[ -n $wid ]] || { wait "$game"; exit 1; }
xdotool windowfocus "$(xdotool search --maxdepth 0 '' | head -n 1)" 2>/dev/null || true
log=$(sed -n 's/^\[information\] log is now directed to file //p' "$4")
until grep -q '^\[Success\] world initialized' "$log" 2>/dev/null; do
  kill -0 "$game" 2>/dev/null || exit 1
  sleep 1
done
xdotool key --window "$wid" --delay 100 Right Right Right Right Right Right Right Down Down Down Down Down s
end=$(( $(date +%s) + 10 ))
while (( $(date +%s) < end )); do
  xdotool mousemove --window "$wid" 640 360 click 1
  sleep 0.5
done
xdotool key --window "$wid" Escape
wait "$game"
INNER
chmod +x "$work/one-run.sh"

export LIBGL_ALWAYS_SOFTWARE=1
status=0
xvfb-run -a -s "-screen 0 1280x720x24" "$work/one-run.sh" "$PWD/$build/quorbane" "$report" \
  "$PWD/tools/valgrind-mesa.supp" "$work/console.txt" || status=$?
echo "game exit status: $status"
grep -E 'definitely lost|indirectly lost|possibly lost|still reachable|suppressed:|ERROR SUMMARY' "$report" |
  sed 's/^==[0-9]*== *//'
echo "report: $report"
