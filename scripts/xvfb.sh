# Sourced by the scripts that need an X display: start_xvfb starts a virtual one on a free
# display number, exports DISPLAY and stops the server when the calling script exits.
# shellcheck shell=bash

start_xvfb() {
  local number_file
  number_file="$(mktemp)"
  # -displayfd picks a free display number and writes it once the server accepts clients.
  Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$number_file" >/dev/null 2>&1 &
  XVFB_PID=$!
  trap 'stop_xvfb' EXIT
  local waited=0
  while [ ! -s "$number_file" ]; do
    if ! kill -0 "$XVFB_PID" 2>/dev/null || [ "$waited" -ge 100 ]; then
      echo "xvfb: the virtual display did not start" >&2
      rm -f "$number_file"
      return 1
    fi
    sleep 0.1
    waited=$((waited + 1))
  done
  export DISPLAY=":$(head -n 1 "$number_file")"
  rm -f "$number_file"
}

stop_xvfb() {
  if [ -n "${XVFB_PID:-}" ]; then
    kill "$XVFB_PID" 2>/dev/null || true
    wait "$XVFB_PID" 2>/dev/null || true
    XVFB_PID=""
  fi
}
