# shellcheck shell=bash
# Shared by the scripts beside this folder: installs, configures and builds. Nothing here writes to standard
# output, which belongs to the program that is run.

root=$(CDPATH='' cd -- "${BASH_SOURCE[0]%/*}/../.." && pwd -P) || exit
# shellcheck source=scripts/lib/packages.sh
source "$root/scripts/lib/packages.sh"

say() { printf '%s\n' "$*" >&2; }

# One set-up at a time, so that two commands started together don't build over each other.
lockBuild() {
    mkdir -p "$root/build" && exec 9>"$root/build/.lock" || return
    flock -w 2 9 || { say "Waiting for another build of this tree" && flock 9; }
}
unlockBuild() { exec 9>&-; }

programsPresent() { type -P "$@" >/dev/null; }

# The packages of the arguments that dpkg doesn't have.
missingPackages() {
    local installed wanted alternatives name
    installed=" $(dpkg-query -W -f '${db:Status-Abbrev}|${Package} ' "${@//|*/}" "${@//*|/}" 2>/dev/null) "
    for wanted in "$@"; do
        IFS='|' read -ra alternatives <<<"$wanted"
        for name in "${alternatives[@]}"; do
            [[ $installed == *"ii |$name "* ]] && continue 2
        done
        printf '%s\n' "${alternatives[0]}"
    done
}

aptGet() {
    local asRoot=(env DEBIAN_FRONTEND=noninteractive)
    ((EUID == 0)) || asRoot=(sudo "${asRoot[@]}")
    "${asRoot[@]}" apt-get -o DPkg::Lock::Timeout=300 -y -q "$@" </dev/null 9>&-
}

# The time-out above does not cover the lock of the package lists, which a machine that has just started holds.
updateLists() {
    local log=$1
    for _ in {1..60}; do
        LC_ALL=C aptGet update >"$log" 2>&1 && return
        grep -q 'Could not get lock' "$log" || return
        sleep 5
    done
}

installPackages() {
    local log="$root/build/apt.log"
    say "Installing $*"
    updateLists "$log"  # out-of-date lists may still do
    aptGet install --no-install-recommends --no-remove "$@" >>"$log" 2>&1 && return
    cat "$log" >&2
    return 1
}

# setUp <command>: afterwards the packages of <command>Packages are there, or it has been said which are not.
# A stamp spares the question to dpkg as long as the list did not change and the programs can be found.
setUp() {
    local -n packages=${1}Packages programs=${1}Programs
    local missing
    stamp="$root/build/.installed-$1"
    [[ $stamp -nt $root/scripts/lib/packages.sh ]] && programsPresent "${programs[@]}" && return
    if ! programsPresent apt-get dpkg-query; then
        programsPresent "${programs[@]}" && return
        say "There is no apt-get here to install what this needs. Please install what Debian calls"
        say "    ${packages[*]//|*/}"
        return 1
    fi
    mapfile -t missing < <(missingPackages "${packages[@]}")
    if ((${#missing[@]})) && ! installPackages "${missing[@]}"; then
        say "These packages are missing and could not be installed: ${missing[*]}"
        programsPresent "${programs[@]}"
        return
    fi
    touch "$stamp"
}

# logged <log> <command…>: the output goes to the log. The first step of a build that has work to do is announced.
logged() {
    local log=$1 line said=
    shift
    "$@" </dev/null 2>&1 9>&- | while IFS= read -r line; do
        [[ -z $said && $line == \[*/*\]* ]] && said=1 && say "Building"
        printf '%s\n' "$line"
    done >"$log"
    return "${PIPESTATUS[0]}"
}

# configured <preset> [-D…]: whether that was done for this very tree, with these settings among others.
configured() {
    local dir="$root/build/$1" cache setting
    [[ $dir/.configured -nt $root/CMakePresets.json && -f $dir/build.ninja ]] || return
    cache=$(<"$dir/CMakeCache.txt")
    for setting in "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "${@:2}"; do
        [[ $cache == *$'\n'"${setting#-D}"$'\n'* ]] || return
    done
}

# configure <command> <preset> [-D…:BOOL=…]: later changes of the CMake files are noticed by the build itself.
configure() {
    local command=$1 preset=$2
    local dir="$root/build/$preset"
    shift 2
    [[ -n ${CI:-} ]] && set -- "$@" -DQUILLET_WARNINGS_AS_ERRORS:BOOL=ON
    configured "$preset" "$@" && return
    mkdir -p "$dir" || return
    # The second try is for a cache of a tree that was moved, and for packages removed since they were stamped.
    if ! logged "$dir/configure.log" cmake -S "$root" --preset "$preset" "$@"; then
        rm -f "$stamp"
        setUp "$command" || return
        if ! logged "$dir/configure.log" cmake -S "$root" --preset "$preset" --fresh "$@"; then
            cat "$dir/configure.log" >&2
            return 1
        fi
    fi
    touch "$dir/.configured"
}

# build <preset> [target…]
build() {
    local dir="$root/build/$1"
    shift
    logged "$dir/build.log" cmake --build "$dir" --parallel "$(nproc)" ${1:+--target "$@"} && return
    cat "$dir/build.log" >&2
    rm -f "$stamp"
    return 1
}

# prepare <command> <preset> <target> [-D…:BOOL=…]: all of the above.
prepare() {
    local command=$1 preset=$2 target=$3
    shift 3
    lockBuild && setUp "$command" && configure "$command" "$preset" "$@" && build "$preset" "$target" || return
    unlockBuild
}
