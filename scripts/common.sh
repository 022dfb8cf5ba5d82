# Shared by run and test: progress lines, packages, a sound server and a display for machines without.
# shellcheck shell=bash

say() { printf '\n\033[1m== %s\033[0m\n' "$*"; }

fail() {
  printf '\nFAILED: %s\n' "$*" >&2
  exit 1
}

# Installs the packages of the list that are missing.
need_packages() {
  local missing=() name
  for name in "$@"; do
    dpkg-query -W -f '${Status}' "$name" 2>/dev/null | grep -q 'install ok installed' ||
      missing+=("$name")
  done
  [ ${#missing[@]} -eq 0 ] && return
  say "installing ${missing[*]}"
  local root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "installing packages needs root or sudo: ${missing[*]}"
    root=(sudo)
  fi
  run_packages "${root[@]}" apt-get update -qq || fail "apt-get update"
  run_packages "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" ||
    fail "apt-get install ${missing[*]}"
}

# Runs a command of the package system, and waits up to five minutes for another one that is under
# way: a fresh desktop updates itself at its first start.
run_packages() {
  local until=$((SECONDS + 300)) told= output
  until output=$(LC_ALL=C "$@" 2>&1); do
    case $output in
      *"Could not get lock"* | *"Unable to lock"* | *"nable to acquire"*) ;;
      *) printf '%s\n' "$output" >&2; return 1 ;;
    esac
    [ $SECONDS -lt $until ] || { printf '%s\n' "$output" >&2; return 1; }
    [ -n "$told" ] || say "another package run is under way: waiting for it, five minutes at most"
    told=1
    sleep 3
  done
}

# Runs the tests of a build folder: all of a failing one's output, a line for the rest.
run_tests() {
  local log
  log=$(mktemp) || fail "no temporary file"
  if ctest --test-dir "$1" --output-on-failure -j2 >"$log"; then
    grep 'tests passed' "$log"
    rm -f "$log"
    return
  fi
  grep -vE '^ *(Start|[0-9]+/[0-9]+ .* Passed) ' "$log"
  rm -f "$log"
  return 1
}

has_sound() {
  grep -q '^ *[0-9]' /proc/asound/cards 2>/dev/null && return 0
  [ -S "${XDG_RUNTIME_DIR:-/nonexistent}/pulse/native" ] ||
    [ -S "${XDG_RUNTIME_DIR:-/nonexistent}/pipewire-0" ]
}

# Starts a sound server of our own whose device plays into nothing, and leads ALSA's default there.
# It ends with this script.
start_null_sound() {
  need_packages pulseaudio pulseaudio-utils libasound2-plugins
  [ -n "${sound_server:-}" ] && kill "$sound_server" 2>/dev/null
  rm -rf "${sound_folder:-}"
  sound_folder=$(mktemp -d) || fail "no temporary folder"
  export XDG_RUNTIME_DIR=$sound_folder
  cat > "$sound_folder/asound.conf" <<CONF
</usr/share/alsa/alsa.conf>
pcm.!default { type pulse }
ctl.!default { type pulse }
CONF
  export ALSA_CONFIG_PATH=$sound_folder/asound.conf
  pulseaudio -n --exit-idle-time=-1 --load="module-null-sink sink_name=null rate=44100" \
    --load=module-native-protocol-unix >"$sound_folder/log" 2>&1 &
  sound_server=$!
  disown "$sound_server"
  trap stop_services EXIT
  wait_until timeout 5 pactl info && return
  cat "$sound_folder/log" >&2
  fail "the null sound server does not start"
}

# Whether a command succeeds within a minute: a busy machine with a cold disk starts servers slowly.
wait_until() {
  local until=$((SECONDS + 60))
  until "$@" >/dev/null 2>&1; do
    [ $SECONDS -lt $until ] || return 1
    sleep 0.1
  done
}

# Starts an X display of our own with a window manager on it, instead of the one before.  It ends with
# this script.
start_own_display() {
  need_packages xvfb openbox xdotool imagemagick x11-utils x11-xserver-utils xauth
  [ -n "${display_server:-}" ] && kill "$display_server" 2>/dev/null
  rm -rf "${display_folder:-}"
  display_folder=$(mktemp -d) || fail "no temporary folder"
  trap stop_services EXIT
  Xvfb -displayfd 3 -screen 0 1280x800x24 3>"$display_folder/number" >"$display_folder/log" 2>&1 &
  display_server=$!
  disown "$display_server"
  if ! wait_until test -s "$display_folder/number"; then
    cat "$display_folder/log" >&2
    ps -o pid,stat,time,wchan,args -p "$display_server" >&2
    df -h "$display_folder" >&2
    fail "Xvfb does not start"
  fi
  export DISPLAY=:$(cat "$display_folder/number")
  openbox >>"$display_folder/log" 2>&1 &
  disown $!
  wait_until sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"' ||
    fail "the window manager does not start"
}

# Runs a check with a sound server and a desktop of its own.  One that fails gets a second desktop: hands
# made by programs slip at times on a busy machine, but a fault of the player's comes again.
on_desktop() {
  local what=$1 attempt
  shift
  for attempt in 1 2; do
    start_null_sound
    start_own_display
    /usr/bin/python3 "$@" && return
    printf '\nFAILED at attempt %s: %s\n' "$attempt" "$what" >&2
  done
  fail "$what"
}

stop_services() {
  [ -n "${sound_server:-}" ] && kill "$sound_server" 2>/dev/null
  [ -n "${display_server:-}" ] && kill "$display_server" 2>/dev/null
  rm -rf "${sound_folder:-}" "${display_folder:-}"
}

build() {
  local told
  told=$(cmake --preset "$1") || { printf '%s\n' "$told"; fail "configure $1"; }
  cmake --build --preset "$1" || fail "build $1"
}
