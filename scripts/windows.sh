# Shared by the commands that use Wine; sourced after common.sh, never run.

tree=$ROOT/build/windows
run_wine=$ROOT/cmake/toolchains/run-wine

# windows_path FILE: the absolute path FILE as Windows programs name it.
windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# build_windows [TARGET...]: with the tools and libraries that it takes.
build_windows() {
  scripts/setup windows
  scripts/build-qt-windows
  say "building (windows)"
  build windows "$@"
}

# within SECONDS PROGRAM [ARGUMENT...]: a Windows program, with a time limit.
within() {
  timeout --kill-after=10 "$1" "$run_wine" "${@:2}" || {
    echo "failed or took longer than $1 s: ${*:2}" >&2
    return 1
  }
}

stop_wine() { timeout 20 wineserver -k 2>/dev/null || true; }

# use_prefix NAME: makes the folder NAME of the build tree a new Wine prefix,
# which stops when the command ends. The user's own is never touched. The first
# program makes the prefix and starts its services; wineboot as that program
# would start them twice, and the running object table then answers nobody.
use_prefix() {
  export WINEPREFIX=$tree/$1
  stop_wine
  rm -rf "$WINEPREFIX"
  trap stop_wine EXIT
  say "making the Wine prefix"
  within 180 cmd /c exit >/dev/null 2>&1
  timeout 60 wineserver -w
}

register_module() {
  say "registering the module: regsvr32 VelkCOMAdapter.dll"
  within 60 regsvr32 /s "$(windows_path "$tree/bin/VelkCOMAdapter.dll")" >&2
}

unregister_module() {
  say "unregistering"
  within 60 regsvr32 /u /s "$(windows_path "$tree/bin/VelkCOMAdapter.dll")" >&2
}
