# shellcheck shell=bash disable=SC2034  # the lists are used by name
# The Debian packages that each command needs. "a|b" is satisfied by either and installs the first.
# "a?" is left out where the system has no such package, as unstable has no trayer.
runPackages=(g++ cmake ninja-build "libcurl4-openssl-dev|libcurl4-gnutls-dev" nlohmann-json3-dev
    libsqlite3-dev libutfcpp-dev ca-certificates)
desktopPackages=("${runPackages[@]}" qt6-base-dev qt6-svg-dev libgl-dev libxcb1-dev
    libfontconfig-dev fonts-inter)
screenPackages=(dbus-daemon xvfb openbox xdotool x11-utils x11-xserver-utils imagemagick xterm
    xrestop "trayer?" xfce4-panel sway waybar xwayland util-linux)
testPackages=("${desktopPackages[@]}" libgtest-dev libgmock-dev python3 openssl
    "${screenPackages[@]}")
demoPackages=("${desktopPackages[@]}" python3 openssl util-linux mount)
tryPackages=("${demoPackages[@]}" "${screenPackages[@]}")
benchPackages=("${desktopPackages[@]}" python3 openssl sqlite3 curl findutils grep xvfb dbus-daemon
    "trayer?" util-linux)
fuzzPackages=("${runPackages[@]}" clang libclang-rt-dev)
packagePackages=("${desktopPackages[@]}" dpkg-dev file gzip)
treePackages=(debootstrap mount tar util-linux)
testInstallPackages=("${packagePackages[@]}" "${treePackages[@]}" python3 openssl appstream
    desktop-file-utils devscripts lintian man-db mandoc)
lintPackages=("${testPackages[@]}" "${benchPackages[@]}" "${fuzzPackages[@]}" clang-tidy)
formatPackages=(clang-format)

# The programs that must then be on the search path.
runPrograms=(c++ cmake ninja)
desktopPrograms=("${runPrograms[@]}")
screenPrograms=(dbus-daemon Xvfb openbox xdotool xprop xrandr convert xterm
    xrestop xfce4-panel sway waybar Xwayland unshare)
testPrograms=("${runPrograms[@]}" python3 openssl "${screenPrograms[@]}")
demoPrograms=("${runPrograms[@]}" python3 openssl unshare mount)
tryPrograms=("${demoPrograms[@]}" "${screenPrograms[@]}")
benchPrograms=("${runPrograms[@]}" python3 openssl sqlite3 curl find grep Xvfb dbus-daemon unshare)
fuzzPrograms=("${runPrograms[@]}" clang++)
packagePrograms=("${desktopPrograms[@]}" cpack dpkg-shlibdeps file gzip)
treePrograms=(debootstrap mount tar unshare)
testInstallPrograms=("${packagePrograms[@]}" "${treePrograms[@]}" python3 openssl appstreamcli
    desktop-file-validate hardening-check lintian man mandoc)
lintPrograms=("${testPrograms[@]}" "${fuzzPrograms[@]}" run-clang-tidy)
formatPrograms=(clang-format)
