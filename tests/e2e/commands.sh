#!/bin/bash
# A session with the real program under a virtual display: a JPEG is opened, ten commands are run
# by keyboard and mouse, some are taken back, the result is saved as PNG. Then the file has to be
# what was on the screen, pixel by pixel, and what the same operations give without the program.
#
#     tests/e2e/commands.sh BUILD [JPEG] [FOLDER]
#
# Wants Xvfb, openbox, xdotool and ImageMagick. Takes a minute; run it by hand, on an idle machine.
set -euo pipefail
build=$(realpath "$1")
folder=$(realpath "${3:-$(mktemp -d)}")
display=:$((90 + RANDOM % 900))
probe=$build/bin/kvn-probe
jpeg=${2:-$folder/made.jpg}
pids=()
trap 'kill "${pids[@]}" 2>/dev/null || true' EXIT

background() { "$@" >>"$folder/log" 2>&1 & pids+=($!); }
keys() { for key in "$@"; do xdotool key --clearmodifiers "$key"; sleep 0.15; done; sleep 0.3; }
write() { xdotool type --delay 60 "$1"; sleep 0.3; }
times() { for _ in $(seq "$2"); do printf '%s ' "$1"; done; }
# The window of that title, waited for. The search fails when another one goes meanwhile.
window() {
    for _ in $(seq 100); do
        xdotool search --onlyvisible --name "^$1\$" 2>/dev/null && return
        sleep 0.2
    done
    echo "no window $1" >&2
    return 1
}
shot() { import -window root "$folder/$1.png"; }
# A menu counted from the right end of the bar, then the keys in it.
menu() { keys alt+f $(times Left "$1"); keys "${@:2}"; }
# A dialog is there, and ready for the keyboard.
dialog() { window "$1" >/dev/null; sleep 0.5; }
# The command has come back to the picture: as many have by then.
done=0
finished() {
    done=$((done + 1))
    for _ in $(seq 200); do
        [ "$(grep -c '"on":"ImgX","op":"Import.FromImgX"' "$KESTRELVANE_TRACE")" -lt $done ] || break
        sleep 0.1
    done
    sleep 0.3
}
transforms=5 filters=6 effects=7
# A click in the window of that title, at a place from its lower left corner.
press() {
    local id
    id=$(window "$1")
    eval "$(xdotool getwindowgeometry --shell "$id")"
    xdotool mousemove --window "$id" "$2" $((HEIGHT - $3)) click 1
    sleep 0.3
}
ok() { press "$1" 80 22; }

[ -e "$jpeg" ] || { convert -size 640x420 plasma:tomato-steelblue "$jpeg"; }
export HOME=$folder DISPLAY=$display KESTRELVANE_TRACE=$folder/trace.jsonl
unset XDG_CONFIG_HOME XDG_STATE_HOME XDG_DATA_HOME
rm -f "$KESTRELVANE_TRACE" "$folder"/out.*
background Xvfb "$display" -screen 0 1600x1000x24
sleep 1
background openbox
background "$build/bin/kestrelvane"
dialog "OML Kestrel Vane"

keys ctrl+o; dialog Open; write "$jpeg"; keys Return; sleep 2
menu $filters Right Return; finished                              # Blur 25%
menu $filters $(times Up 6) Return; dialog Noise; keys Tab; write 40; ok Noise; finished
menu $effects a; dialog "Add Border"; write 16; ok "Add Border"; finished
menu $transforms r; dialog Resize; write 600; keys Return; finished # the height follows
menu $transforms f h; finished                                    # Flip, horizontal
menu $filters $(times Up 16) Right Down Return; finished          # Sharpen 50%
menu $effects $(times Down 9) Return; dialog "Histogram Stretch"
write 20; keys Tab; write 230; ok "Histogram Stretch"; finished
menu $filters $(times Up 11) Right Return; finished               # PatchWork Mosaic
menu $filters $(times Up 4) Return; finished                      # Posterize
menu $filters $(times Up 12) Right Return; finished               # Night Line
shot all
keys ctrl+z ctrl+z ctrl+z ctrl+z ctrl+y
shot seen
keys ctrl+shift+s; dialog "Save As"
press "Save As" 435 29; keys Down Return # PNG, the second of the list
keys alt+n ctrl+a; write "$folder/out"; keys Return; sleep 2
shot saved

[ -e "$folder/out.png" ] || { echo "nothing was saved, see $folder"; exit 1; }
[ "$done" = "$(grep -c '"on":"ImgX","op":"Import.FromImgX"' "$KESTRELVANE_TRACE")" ]

# Where the picture stands on the screen: its upper left corner is looked for.
plain() { convert "$1" -alpha off -crop "$2" +repage "$3"; }
plain "$folder/out.png" 40x40+0+0 "$folder/corner.png"
plain "$folder/seen.png" 400x300+100+100 "$folder/part.png"
place=$(compare -metric RMSE -subimage-search "$folder/part.png" "$folder/corner.png" null: 2>&1 || true)
place=${place##*@ }
place=${place%% *}
plain "$folder/seen.png" "$(identify -format %wx%h "$folder/out.png")+$((${place%,*} + 100))+$((${place#*,} + 100))" \
    "$folder/canvas.png"

# The same operations with nothing around them: what was not taken back.
"$probe" run "$jpeg" "$folder/replay.png" Effects.Blur 25 7 false + Effects.Noise 0 40 false true \
    + Geometry.ResizeCanvas $(identify -format '%[fx:w+32] %[fx:h+32]' "$jpeg") '#000000ff' 16 16 \
    + Geometry.Resize $(identify -format '%w %h' "$folder/out.png") 3 + Geometry.Flip 0 \
    + Effects.Sharpen 50 3 true + Geometry.HistogramStretch 20 230 7

status=0
for other in canvas replay; do
    different=$(compare -metric AE "$folder/$other.png" "$folder/out.png" null: 2>&1 || true)
    echo "pixels of the file that are others than those of the $other: $different"
    [ "$different" = 0 ] || status=1
done
exit $status
