# shellcheck shell=bash disable=SC2154  # root is of setup.sh, demoServer_PID of the coprocess
# For scripts, after setup.sh: a home directory in which all four assistants are signed in, and a
# server that answers for their vendors. Nothing of this user's is read or sent.

# startDemo: makes the home directory and starts the server. Sets demo, the temporary directory of
# both, and demoHome.
startDemo() {
    demo=$(mktemp -d) && demoHome=$demo/home || return
    trap stopDemo EXIT
    cp -R "$root/Tests/fixtures/home" "$demoHome" && dateAnswers || return
    "$root/Tests/Support/opencode-tool" "$demoHome/.local/share/opencode/opencode.db" \
        "$(<"$root/Tests/fixtures/opencode.sql")" || return
    # Only this shell has the other end of its input, so the server ends whenever the shell ends.
    mkdir "$demo/server" &&
        coproc demoServer { exec "$root/Tests/Support/https-server" "$demo/server" 2>&1; }
    demoServerID=$demoServer_PID demoServerInput=${demoServer[1]}
    read -r -t 30 demoPort _ <&"${demoServer[0]}"
    [[ $demoPort =~ ^[0-9]+$ ]] ||
        { say "The server for the demonstration did not start: $demoPort" && return 1; }
    replyClaude 42 $((3 * 3600 + 330)) 61 $(((2 * 24 + 4) * 3600 + 1830)) &&
        replyCodex plus 7 $((100 * 60 + 30)) 30 $((5 * 86400 + 1830)) &&
        checkDemo
}

stopDemo() {
    if [[ -n ${demoServerID:-} ]]; then
        exec {demoServerInput}>&-
        wait "$demoServerID"
        demoServerID=
    fi 2>/dev/null
    rm -rf "$demo"
}

# Makes the answers in Gemini's chat those of just now.
dateAnswers() {
    local now
    TZ=UTC printf -v now '%(%FT%T.000Z)T'
    sed -i "s/NOW/$now/g" "$demoHome"/.gemini/tmp/app/chats/*
}

# inDemo <command…>: runs the command with that home directory and server. The program trusts only
# the system's authorities, so the server's replaces them in a mount namespace of the command's. The
# second namespace gives a user other than root their own id back, as the session bus requires it.
inDemo() {
    local unshare=(unshare -m) back=
    ((EUID == 0)) || unshare=(unshare -rm) back="unshare --map-user=$EUID --map-group=$(id -g)"
    env -u no_proxy -u NO_PROXY -u XDG_CONFIG_HOME \
        HOME="$demoHome" https_proxy="http://127.0.0.1:$demoPort" "${unshare[@]}" \
        sh -c "mount --bind \"\$0\" /etc/ssl/certs/ca-certificates.crt && exec $back \"\$@\"" \
        "$demo/server/ca.pem" "$@"
}

checkDemo() {
    local why
    why=$(inDemo true 2>&1) && return
    say "The demonstration needs a mount namespace of its own, which can't be made here: $why"
    return 1
}

# reply <path> <body> [status]: what the server answers there from now on.
reply() {
    local replies=$demo/server/replies
    mkdir -p "$replies" && python3 -c 'import json, sys
print(json.dumps({"body": sys.argv[1], "status": int(sys.argv[2])}))' \
        "$2" "${3:-200}" >"$demo/server/new" && mv "$demo/server/new" "$replies/${1//\//_}.json"
}

# replyClaude <5h percent> <seconds until its reset> <week's percent> <seconds until its reset>
replyClaude() {
    local now window='{"utilization": %s, "resets_at": "%(%FT%TZ)T"}'
    printf -v now '%(%s)T'
    # shellcheck disable=SC2059  # the window is part of the format
    reply /api/oauth/usage "$(TZ=UTC printf \
        "{\"five_hour\": $window, \"seven_day\": $window}" \
        "$1" $((now + $2)) "$3" $((now + $4)))"
}

# replyCodex <plan> <as above…>
replyCodex() {
    local now window='{"used_percent": %s, "limit_window_seconds": %d, "reset_at": %d}'
    local windows="{\"primary_window\": $window, \"secondary_window\": $window}"
    printf -v now '%(%s)T'
    # shellcheck disable=SC2059  # the windows are part of the format
    reply /backend-api/wham/usage "$(printf "{\"plan_type\": \"%s\", \"rate_limit\": $windows}" \
        "$1" "$2" 18000 $((now + $3)) "$4" 604800 $((now + $5)))"
}
