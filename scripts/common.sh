# Shared by run and test: progress lines, packages, a sound server for machines without one.
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
  "${root[@]}" apt-get update -qq || fail "apt-get update"
  DEBIAN_FRONTEND=noninteractive "${root[@]}" apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null || fail "apt-get install ${missing[*]}"
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
  trap stop_null_sound EXIT
  local i
  for i in $(seq 50); do
    pactl info >/dev/null 2>&1 && return
    sleep 0.1
  done
  cat "$sound_folder/log" >&2
  fail "the null sound server does not start"
}

stop_null_sound() {
  kill "$sound_server" 2>/dev/null
  rm -rf "$sound_folder"
}

build() {
  cmake --preset "$1" >"/tmp/kwo-configure.$$" || { cat "/tmp/kwo-configure.$$"; fail "configure $1"; }
  rm -f "/tmp/kwo-configure.$$"
  cmake --build --preset "$1" || fail "build $1"
}
