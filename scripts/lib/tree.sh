# shellcheck shell=bash disable=SC2154  # root is of setup.sh
# For scripts, after setup.sh: bare Debian trees to run programs in, which needs root. They come
# from the mirror that apt uses here. Downloads are kept for the next time, also for other
# checkouts, and may be deleted at any time.

((EUID == 0)) || { say "This needs root, for a tree to change into: sudo $0" && exit 1; }
kept=${XDG_CACHE_HOME:-$HOME/.cache}/quillet/debian

# step <title> <command…>: ends the script if the command fails.
step() {
    local start=$SECONDS
    printf '\n== %s\n' "$1"
    "${@:2}" 2>&1 || { printf 'FAILED: %s\n' "$1" && exit 1; }
    printf '(%d s)\n' $((SECONDS - start))
}

shown() {
    printf '$ %s\n' "$*"
    "$@"
}

# aptSources <suite>: this machine's sources, for that suite. Unstable has no "-security" or such.
aptSources() {
    local uri release part
    # shellcheck disable=SC2016  # apt's own variables
    apt-get indextargets --format '$(REPO_URI) $(RELEASE)' \
        'Created-By: Packages' 'Component: main' 'Origin: Debian' |
        while read -r uri release; do
            part=${release#"${release%%-*}"}  # "-security" and the like
            [[ $part && $1 == @(sid|unstable) ]] || printf 'deb %s %s%s main\n' "$uri" "$1" "$part"
        done | sort -u
}

# ownSuite: this machine's.
ownSuite() { sed -n 's/^VERSION_CODENAME=//p' /etc/os-release; }

# keepBase <suite>: downloads a bare tree, unless an earlier run did.
keepBase() {
    local base=$kept/$1 mirror
    [[ -d $base ]] && printf 'kept from an earlier time\n' && return
    mirror=$(aptSources "$1" | sed -n "s/^deb \(.*\) $1 main\$/\1/p" | head -n 1)
    [[ $mirror ]] || { printf 'apt knows no source of Debian here\n' && return 1; }
    rm -rf "$base.new" || return
    unshare --mount debootstrap --variant=minbase "$1" "$base.new" "$mirror" >"$base.log" ||
        { tail -n 5 "$base.log" && return 1; }
    mv "$base.new" "$base"
}

# makeTree <suite> <directory>: makes the tree for the functions below, and upgrades it. Trees of a
# suite share what apt downloads, so others wait until this one is dropped.
makeTree() {
    tree=$2 archives=$kept/$1.archives
    mkdir -p "$kept" && exec 8>"$kept/$1.lock" || return
    flock -n 8 || { printf 'Waiting for others that use this suite\n' && flock 8; } || return
    [[ $(aptSources "$1") ]] || updateLists
    keepBase "$1" && rm -rf "$tree" && mkdir -p "${tree%/*}" "$archives/partial" &&
        cp -a "$kept/$1" "$tree" || return
    rm -f "$tree/etc/apt/sources.list" && aptSources "$1" >"$tree/etc/apt/sources.list" || return
    apt-config dump --no-empty Acquire >"$tree/etc/apt/apt.conf.d/00machine" || return
    cp /etc/resolv.conf /etc/hosts "$tree/etc" || return
    printf '#!/bin/sh\nexit 101\n' >"$tree/usr/sbin/policy-rc.d" &&
        chmod +x "$tree/usr/sbin/policy-rc.d" || return
    : >"$tree.log"
    aptInTree update && aptInTree dist-upgrade && aptInTree autoclean
}

dropTree() { rm -rf "$tree" && exec 8>&-; }

# copySources <directory of the tree>: copies this checkout without its build and its history.
copySources() {
    mkdir "$tree$1" && tar -C "$root" --exclude=./build --exclude=./.git -c . | tar -C "$tree$1" -x
}

# inTree <command…>: runs it as root; its mounts and processes end with it. It uses pivot_root, as a
# process in a chroot can't make user namespaces.
inTree() {
    # shellcheck disable=SC2016
    unshare --mount --pid --fork --kill-child sh -c '
        mount --bind "$0" "$0" && mount --bind "$1" "$0/var/cache/apt/archives" && cd "$0" &&
            mount -t proc proc proc && mount -t sysfs -o ro sysfs sys &&
            mount -t tmpfs tmpfs dev/shm &&
            mount -t devpts -o newinstance,ptmxmode=0666 devpts dev/pts &&
            ln -snf pts/ptmx dev/ptmx || exit
        shift
        pivot_root . mnt && umount -l /mnt && exec "$@"' "$tree" "$archives" \
        env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}

aptInTree() {
    inTree apt-get -y -q "$@" >>"$tree.log" 2>&1 || { tail -n 20 "$tree.log" && return 1; }
}

# installFiles <package file…>
installFiles() {
    cp "$@" "$tree/root" && aptInTree install --no-install-recommends "${@/#*\//\/root/}" &&
        rm "$tree/root"/*.deb
}
