# shellcheck shell=bash
# For scripts: installs, configures and builds. Nothing here writes to standard output, which
# belongs to the program that is run.

root=$(CDPATH='' cd -- "${BASH_SOURCE[0]%/*}/../.." && pwd -P) || exit
# shellcheck source=scripts/lib/packages.sh
source "$root/scripts/lib/packages.sh"

say() { printf '%s\n' "$*" >&2; }

# One build at a time: two commands started together must not write the same files.
lockBuild() {
    { mkdir -p "$root/build" && touch "$root/build/.lock"; } 2>/dev/null ||
        { say "This needs to write in $root/build. Does it belong to another user?" && return 1; }
    exec 9>"$root/build/.lock"
    flock -w 2 9 || { say "Waiting for another build of this tree" && flock 9; }
}
unlockBuild() { exec 9>&-; }

programsPresent() { type -P "$@" >/dev/null; }

# missingPackages <name…>: those that are not installed.
missingPackages() {
    local installed wanted alternatives name
    installed=" $(dpkg-query -W -f '${db:Status-Abbrev}|${Package} ' \
        "${@//[|?]*/}" "${@//*|/}" 2>/dev/null) "
    for wanted in "$@"; do
        IFS='|?' read -ra alternatives <<<"$wanted"
        for name in "${alternatives[@]}"; do
            [[ $installed == *"ii |$name "* ]] && continue 2
        done
        [[ $wanted == *\? ]] && name=$wanted || name=${alternatives[0]}
        printf '%s\n' "$name"
    done
}

# offeredPackages <name…>: the same without the optional ones that this system does not have.
offeredPackages() {
    local name
    for name in "$@"; do
        if [[ $name == *\? && ! $(apt-cache show "${name%\?}" 2>/dev/null) ]]; then
            say "This system has no package ${name%\?}; what needs it is left out"
        else
            printf '%s\n' "${name%\?}"
        fi
    done
}

# mayInstall: whether we are root, or sudo works. It may ask for a password if there is a terminal.
mayInstall() {
    ((EUID == 0)) && return
    programsPresent sudo || return
    sudo -n true 2>/dev/null || { [[ -t 2 ]] && sudo -v; }
}

aptGet() {
    local asRoot=(env DEBIAN_FRONTEND=noninteractive)
    ((EUID == 0)) || asRoot=(sudo "${asRoot[@]}")
    "${asRoot[@]}" apt-get -o DPkg::Lock::Timeout=300 -y -q "$@" </dev/null 9>&-
}

# Updates the package lists. The timeout above does not cover their lock, which a machine that has
# just started holds.
updateLists() {
    for _ in {1..60}; do
        LC_ALL=C aptGet update >"$root/build/apt.log" 2>&1 && return
        grep -q 'Could not get lock' "$root/build/apt.log" || return
        sleep 5
    done
}

installPackages() {
    say "Installing $*"
    aptGet install --no-install-recommends --no-remove "$@" >>"$root/build/apt.log" 2>&1 && return
    cat "$root/build/apt.log" >&2
    return 1
}

# setUp <command>: installs what the command needs, or fails and says what to do. Libraries may
# exist without their packages, so where packages can't be installed, "advice" is kept until
# configuring fails. While the stamp is newer than the lists and the programs exist, dpkg is not
# asked.
setUp() {
    local -n packages=${1}Packages programs=${1}Programs
    local missing may=
    stamp="$root/build/.installed-$1" advice=
    [[ $stamp -nt $root/scripts/lib/packages.sh ]] && programsPresent "${programs[@]}" && return
    if programsPresent apt-get dpkg-query; then
        mapfile -t missing < <(missingPackages "${packages[@]}")
        ((${#missing[@]})) && mayInstall && may=1 && updateLists  # out-of-date lists may still do
        mapfile -t missing < <(offeredPackages "${missing[@]}")
        if ((${#missing[@]} == 0)) || { [[ $may ]] && installPackages "${missing[@]}"; }; then
            touch "$stamp"
            return
        fi
        advice="Packages are missing that can't be installed from here. As root, run
    apt-get install --no-install-recommends ${missing[*]}"
    else
        advice="There is no apt-get here. Please install what Debian calls
    $(missingPackages "${packages[@]}" | tr -d '?' | paste -sd ' ')
docs/install.md has the names that other distributions use."
    fi
    programsPresent "${programs[@]}" && return
    say "$advice"
    return 1
}

# logged <log> <command…>: writes the output to the log, and says when a build begins.
logged() {
    local log=$1 line said=
    shift
    "$@" </dev/null 2>&1 9>&- | while IFS= read -r line; do
        [[ -z $said && $line == \[*/*\]* ]] && said=1 && say "Building"
        printf '%s\n' "$line"
    done >"$log"
    return "${PIPESTATUS[0]}"
}

# configured <preset> [-D…]: whether the preset is configured for this tree with these settings.
configured() {
    local dir="$root/build/$1" cache setting
    [[ $dir/.configured -nt $root/CMakePresets.json && -f $dir/build.ninja ]] || return
    cache=$(<"$dir/CMakeCache.txt")
    for setting in "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "${@:2}"; do
        [[ $cache == *$'\n'"${setting#-D}"$'\n'* ]] || return
    done
}

# configure <command> <preset> [-D…:BOOL=…]: the build itself notices later changes of CMake files.
configure() {
    local command=$1 preset=$2
    local dir="$root/build/$preset"
    shift 2
    [[ -n ${CI:-} ]] && set -- "$@" -DQUILLET_WARNINGS_AS_ERRORS:BOOL=ON
    configured "$preset" "$@" && return
    mkdir -p "$dir" || return
    # The second try helps if the tree was moved, or if packages were removed after the stamp.
    if ! logged "$dir/configure.log" cmake -S "$root" --preset "$preset" "$@"; then
        rm -f "$stamp"
        setUp "$command" || return
        if ! logged "$dir/configure.log" cmake -S "$root" --preset "$preset" --fresh "$@"; then
            if [[ $advice ]]; then
                say "$advice" && say "What CMake says is in build/$preset/configure.log."
            else
                cat "$dir/configure.log" >&2
            fi
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
    lockBuild && setUp "$command" && configure "$command" "$preset" "$@" &&
        build "$preset" "$target" || return
    unlockBuild
}
