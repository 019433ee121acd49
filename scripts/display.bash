# The window on a display that nobody sees: sourced after common.bash, never run. Works on the release build and in a
# temporary profile.

bin=$top/build/release/bin
width=1120
height=760

host_pid=
window_pid=
# What the window is started with: -reverse shows it as a language has it that runs from right to left.
window_arguments=()

# Ends what open_window and start_practice_host have started; they have it done when the script ends.
end_programs()
{
    local started
    for started in $window_pid $host_pid; do
        kill "$started" 2>/dev/null || true
        wait "$started" 2>/dev/null || true
    done
    window_pid=
    host_pid=
}

# The display and the means to type, click and take pictures; names what is missing.
missing_display_programs()
{
    local program
    for program in Xvfb xdotool import; do
        command -v "$program" >/dev/null || printf '%s\n' "$program"
    done
}

start_display()
{
    local number=$profile/display
    Xvfb -displayfd 3 -screen 0 ${width}x${height}x24 -nolisten tcp -noreset 3>"$number" >/dev/null 2>&1 &
    display_pid=$!
    on_exit 'kill "$display_pid" 2>/dev/null; wait "$display_pid" 2>/dev/null'
    until [ -s "$number" ]; do
        kill -0 "$display_pid" 2>/dev/null || fail "Xvfb did not start"
        sleep 0.05
    done
    export DISPLAY=:$(<"$number") QT_QPA_PLATFORM=xcb
    unset WAYLAND_DISPLAY
}

# A desktop has a face for its interface; a bare display has none.
choose_font()
{
    export FONTCONFIG_FILE=$profile/fonts.conf LC_ALL=C.UTF-8 LANG=en_GB.UTF-8
    cat >"$FONTCONFIG_FILE" <<XML
<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <include>/etc/fonts/fonts.conf</include>
  <cachedir>$profile/cache/fontconfig</cachedir>
  <alias binding="strong"><family>sans-serif</family><prefer><family>Inter</family></prefer></alias>
  <alias binding="strong"><family>Sans Serif</family><prefer><family>Inter</family></prefer></alias>
</fontconfig>
XML
}

# start_practice_host [ARGUMENT…]: on a free port; sets `host_url` and `host_pid`, and `host_log` to what it says.
start_practice_host()
{
    local tries
    host_log=$profile/practice-host.log
    : >"$host_log" # the background job makes it too, but maybe only after the first look
    "$bin/varnel-practice-host" --port 0 --quiet "$@" >"$host_log" 2>&1 &
    host_pid=$!
    on_exit end_programs
    for ((tries = 0; tries < 200; tries++)); do
        host_url=$(sed -n 's/^Practice host on \(http:[^ ]*\) .*/\1/p' "$host_log")
        [ -z "$host_url" ] || return 0
        kill -0 "$host_pid" 2>/dev/null || fail "the practice host did not start: $(cat "$host_log")"
        sleep 0.05
    done
    fail "the practice host did not say where it listens within 10 s"
}

# prefer_practice_host MODEL: the preferences of the profile lead to the host.
prefer_practice_host()
{
    mkdir -p "$XDG_CONFIG_HOME/varnel"
    cat >"$XDG_CONFIG_HOME/varnel/preferences.ini" <<INI
[General]
varnel.connection="@ByteArray({\"directURL\": \"$host_url\", \"localPort\": 11434, \"mode\": \"direct\", \"remoteBind\": \"127.0.0.1:11434\", \"sshHost\": \"\", \"sshIdentityFile\": \"\", \"sshUser\": \"\"})"
varnel.defaultModel=$1
varnel.onboardingComplete=true
INI
}

# open_window COLOURS ZOOM: the window over the whole display, with the keyboard's attention.
open_window()
{
    local id
    mkdir -p "$XDG_DATA_HOME/varnel"
    printf '[General]\ncolours=%s\nzoom=%s\ngeometry=@Rect(0 0 %s %s)\n' "$1" "$2" $width $height \
        >"$XDG_DATA_HOME/varnel/window.ini"
    "$bin/varnel" "${window_arguments[@]}" 2>"$profile/window.log" &
    window_pid=$!
    on_exit end_programs
    id=$(xdotool search --sync --onlyvisible --pid "$window_pid" 2>/dev/null | tail -n 1)
    xdotool windowfocus --sync "$id"
    xdotool mousemove 2 $((height - 2))
    settle
}

close_window()
{
    end_programs
    [ ! -s "$profile/window.log" ] || fail "the window complained: $(cat "$profile/window.log")"
}

# Waits until nothing moves above the composer, whose cursor blinks.
settle()
{
    local before= now same=0 tries
    for ((tries = 0; tries < 300; tries++)); do
        now=$(import -silent -window root -crop ${width}x$((height - 150))+0+0 rgb:- | md5sum)
        [ "$now" = "$before" ] && same=$((same + 1)) || same=0
        [ $same -lt 6 ] || return 0
        before=$now
        sleep 0.1
    done
    fail "the window did not come to rest"
}

keys()
{
    xdotool key --delay 30 "$@"
}
write()
{
    xdotool type --delay 4 "$1"
}

# take_picture FILE
take_picture()
{
    import -silent -window root "$1"
}
