#!/bin/sh
# A mistake on the command line is told, and nothing is rendered.
# usage: render_list_mistakes.sh RENDER_LIST SONG
out=$(mktemp -u)
for mistake in --seconds '--seconds x' '--seconds -1' '--set SliderVol' '--set Slider=1' \
  '--set SliderVol=loud' '--at 1' '--at soon stop' '--at 1 jump' '--at 1 seek=' --fast; do
  # shellcheck disable=SC2086  # the mistake is several words
  if said=$("$1" "$2" "$out" $mistake 2>&1) || [ -z "$said" ] || [ -e "$out" ]; then
    echo "taken, or not told: $mistake"
    exit 1
  fi
done
