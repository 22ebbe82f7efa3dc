# Sourced by scripts that run Windows programs under Wine. Sets `wine` to the program that
# scripts/build-windows has found, and exports the environment for it, except WINEPREFIX.

wine=$(sed -n 's/^QUORIN_WINE:FILEPATH=//p' \
  "$(dirname "${BASH_SOURCE[0]}")/../build/windows/CMakeCache.txt")
if [ ! -x "$wine" ]; then
  printf '%s\n' "wine64 was not found" >&2
  exit 1
fi
for WINESERVER in "$(dirname "$wine")/wineserver64" "$(dirname "$wine")/wineserver"; do
  [ ! -x "$WINESERVER" ] || break
done

unset DISPLAY WAYLAND_DISPLAY
export LC_ALL=C.UTF-8 # the encoding of file names that Wine creates
export WINELOADER=$wine WINESERVER WINEARCH=win64
export WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES='mscoree=;mshtml='

windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# Creates the files of Wine in the folder WINEPREFIX.
create_wine_prefix() {
  "$wine" wineboot --init >"$WINEPREFIX.log" 2>&1 || {
    cat "$WINEPREFIX.log" >&2
    return 1
  }
  "$WINESERVER" -w
}

# Ends the programs that run in the folder WINEPREFIX, and no others.
end_wine() {
  "$WINESERVER" -k || true
  "$WINESERVER" -w || true
}
