# Shared by the scripts of this folder: sourced, never run. Leaves the shell in the repository's top folder.
set -euo pipefail

script=${0##*/}
cd -P -- "$(dirname -- "${BASH_SOURCE[0]}")/.." >/dev/null
top=$PWD

fail()
{
    printf '%s: %s\n' "$script" "$*" >&2
    exit 1
}

# What has to be undone when the script ends, however it ends; the last registered goes first.
cleanups=()
on_exit()
{
    cleanups=("$1" "${cleanups[@]}")
}
run_cleanups()
{
    local command
    for command in "${cleanups[@]}"; do
        eval "$command" || true
    done
}
trap run_cleanups EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# build_preset NAME: configures and builds a preset. Its output goes to build/NAME.log and is shown only if it fails.
build_preset()
{
    local preset=$1 log=build/$1.log started=$SECONDS
    { mkdir -p build && [ -w build ]; } 2>/dev/null || fail "$top/build cannot be written; does it belong to root?"
    printf 'Building (%s)… ' "$preset"
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset"; } >"$log" 2>&1 </dev/null; then
        printf 'failed.\n'
        tail -n 80 "$log" >&2
        fail "the build failed; all of its output is in $log"
    fi
    printf 'done in %d s.\n' $((SECONDS - started))
}

# Gives the programs started from here on a home of their own, which is removed at the end: what a script does never
# reaches the preferences, conversations or keys of whoever runs it. Sets `profile` to the folder.
use_temporary_profile()
{
    local home=${HOME:-/} runtime=${XDG_RUNTIME_DIR:-} variable
    profile=$(mktemp -d "${TMPDIR:-/tmp}/varnel-profile.XXXXXX") || fail "there is no room for a temporary profile"
    on_exit 'rm -rf -- "$profile"'
    mkdir -m 700 "$profile/home" "$profile/config" "$profile/data" "$profile/cache" "$profile/runtime"

    # The compiler cache and the way to the display are not part of a profile.
    export CCACHE_DIR=${CCACHE_DIR:-${XDG_CACHE_HOME:-$home/.cache}/ccache}
    if [ -n "${DISPLAY:-}" ]; then
        export XAUTHORITY=${XAUTHORITY:-$home/.Xauthority}
    fi
    if [ -n "${WAYLAND_DISPLAY:-}" ] && [ "${WAYLAND_DISPLAY#/}" = "$WAYLAND_DISPLAY" ]; then
        export WAYLAND_DISPLAY=$runtime/$WAYLAND_DISPLAY
    fi

    export HOME=$profile/home XDG_CONFIG_HOME=$profile/config XDG_DATA_HOME=$profile/data
    export XDG_CACHE_HOME=$profile/cache XDG_RUNTIME_DIR=$profile/runtime
    for variable in $(compgen -e VARNEL_); do
        unset "$variable"
    done
    unset SSH_AUTH_SOCK SSH_ASKPASS
}

# Cuts the session bus off, and with it the keyring of whoever runs the script.
without_session_bus()
{
    export DBUS_SESSION_BUS_ADDRESS=disabled:
}

# run_tests PRESET [CTEST ARGUMENT…]: every test but the long ones, two at a time.
run_tests()
{
    local preset=$1
    shift
    ctest --test-dir "build/$preset" --output-on-failure --parallel 2 --label-exclude '^soak$' "$@" </dev/null
}
