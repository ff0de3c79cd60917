# shellcheck shell=bash
# The parts around the agent that scripts/demo starts, and their end. Sourced; $work is the demo's folder, and
# $gateway_password the password of the gateway's user.
: "${work:?}" "${gateway_password:?}"

fail() {
  echo "demo: $*" >&2
  exit 1
}

# fill FILE TARGET: copies a file with its marks replaced.
fill() { sed -e "s|@PORT@|$port|g" -e "s|@GATEWAY_PORT@|$gateway_port|g" -e "s|@WORK@|$work|g" "$1" >"$2"; }

accepts_connections() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }

# What the store's and the gateway's discovery services answer, and who may log on at the gateway.
write_documents() {
  local name
  mkdir -p "$work/documents"
  for name in example-stores branch-office; do
    fill "demo/$name.discovery.xml" "$work/documents/$name.discovery.xml"
  done
  printf 'demo:{PLAIN}%s\n' "$gateway_password" >"$work/documents/users"
}

# Starts nginx, the store and the gateway, on free ports of this machine and sets port, gateway_port and server_pid.
start_servers() {
  local nginx tries=20
  nginx=$(PATH=$PATH:/usr/sbin command -v nginx)
  mkdir -p "$work/nginx"
  while ((tries-- > 0)); do
    port=$((20000 + (RANDOM % 5000) * 2))
    gateway_port=$((port + 1))
    if accepts_connections "$port" || accepts_connections "$gateway_port"; then continue; fi
    write_documents
    fill demo/nginx.conf.in "$work/nginx/nginx.conf"
    "$nginx" -p "$work/nginx" -e "$work/nginx/error.log" -c "$work/nginx/nginx.conf" </dev/null &
    server_pid=$!
    if wait_for_server; then return; fi
    kill "$server_pid" 2>/dev/null || true
    wait "$server_pid" || true
  done
  cat "$work/nginx/error.log" >&2
  fail "the servers do not start"
}

# nginx does not tell when it listens, so this asks until it does or has ended.
wait_for_server() {
  local deadline=$((SECONDS + 10))
  while ((SECONDS < deadline)) && kill -0 "$server_pid" 2>/dev/null; do
    if accepts_connections "$port"; then return 0; fi
    sleep 0.05
  done
  return 1
}

# Sets display to what programs of the demo's session need to show windows on the user's screen.
use_display() {
  display=("DISPLAY=${DISPLAY:-}" "XAUTHORITY=${XAUTHORITY:-$HOME/.Xauthority}")
  # Its name alone stands for a socket in the user's own runtime folder.
  case ${WAYLAND_DISPLAY:-} in
    '' | /*) display+=("WAYLAND_DISPLAY=${WAYLAND_DISPLAY:-}") ;;
    *) display+=("WAYLAND_DISPLAY=${XDG_RUNTIME_DIR:-}/$WAYLAND_DISPLAY") ;;
  esac
  use_accessibility_bus
}

# Adds the user's own, for screen readers: the demo's bus has none.
use_accessibility_bus() {
  local address
  if address=$(timeout 5 gdbus call --session --dest org.a11y.Bus --object-path /org/a11y/bus \
    --method org.a11y.Bus.GetAddress 2>/dev/null) && [[ $address =~ \'(.+)\' ]]; then
    display+=("AT_SPI_BUS_ADDRESS=${BASH_REMATCH[1]}")
  else
    display+=(GTK_A11Y=none)
  fi
}

# The surroundings of everything that runs in the demo's session: nothing of the user's own is read or written.
prepare_session() {
  mkdir -m 0700 "$work/home" "$work/runtime"
  session=(env -i PATH="$work/prefix/bin:$PATH" LANG=C.UTF-8 TERM="${TERM:-dumb}" HOME="$work/home"
    XDG_CONFIG_HOME="$work/home/.config" XDG_CONFIG_DIRS="$work/machine" XDG_DATA_HOME="$work/home/.local/share"
    XDG_DATA_DIRS="$work/prefix/share:/usr/local/share:/usr/share" XDG_CACHE_HOME="$work/home/.cache"
    XDG_RUNTIME_DIR="$work/runtime" SSL_CERT_FILE="$work/authority/ca.pem"
    "DBUS_SESSION_BUS_ADDRESS=unix:path=$work/bus" "$@")
}

# Returns when the bus takes connections: it prints its address then.
start_bus() {
  fill demo/bus.conf.in "$work/bus.conf"
  mkfifo "$work/bus-address"
  "${session[@]}" dbus-daemon --config-file="$work/bus.conf" --nofork --nopidfile --print-address=3 \
    3>"$work/bus-address" </dev/null 2>"$work/bus.log" &
  bus_pid=$!
  read -r -t 10 <"$work/bus-address" || fail "the bus does not start: $(<"$work/bus.log")"
}

# Opens descriptor 4 to a record of everything posted on the bus from now on.
watch_notifications() {
  local line
  mkfifo "$work/notifications"
  "${session[@]}" dbus-monitor "type='signal',interface='com.morvane.DistributedNotifications'" \
    >"$work/notifications" </dev/null 2>"$work/monitor.log" &
  monitor_pid=$!
  exec 4<"$work/notifications"
  # The bus takes the monitor's name away at the moment from which it sees everything.
  while read -r -t 10 line <&4; do
    if [[ $line == *member=NameLost* ]]; then return; fi
  done
  fail "the bus cannot be watched: $(<"$work/monitor.log")"
}

bus_call() {
  "${session[@]}" gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
    --method "org.freedesktop.DBus.$1" com.morvane.ServiceRecords 2>/dev/null
}

# The agent's process id; fails when it does not run.
agent_pid() {
  local reply
  reply=$(bus_call GetConnectionUnixProcessID) && [[ $reply =~ \ ([0-9]+) ]] && echo "${BASH_REMATCH[1]}"
}

# end PID: asks the process to end and waits until it has, five seconds at most.
end() {
  kill "$1" 2>/dev/null || return 0
  timeout 5 tail --pid="$1" -f /dev/null || kill -KILL "$1" 2>/dev/null || true
}

keep_log() {
  [[ -f $work/home/Library/Logs/ServiceRecord.log ]] || return 0
  mkdir -p build/demo
  cp "$work/home/Library/Logs/ServiceRecord.log" build/demo/
}

end_everything() {
  local status=$? pid
  trap - EXIT
  if [[ ${bus_pid:-} ]]; then
    if pid=$(agent_pid); then end "$pid"; fi
  fi
  for pid in "${monitor_pid:-}" "${bus_pid:-}" "${server_pid:-}"; do
    [[ ! $pid ]] || end "$pid"
  done
  wait
  if ((status != 0)); then keep_log; fi
  rm -rf "$work"
  exit "$status"
}
