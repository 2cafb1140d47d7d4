#!/usr/bin/env bash
# Ferrylane beside what else one may use to put a file on another computer. See --help.
set -euo pipefail

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
size=1024 # MiB
runs=5
loud=false

usage() {
    cat << 'END'
Usage: bench/peers.sh [--loud] [--size MIB] [BUILD]     BUILD: build/bench when not given

Puts a file (of 1024 MiB) from memory into memory, over the loopback interface of a network of its own:
with ferrylane-phone to ferrylane, with scp (aes256-gcm@openssh.com) to sshd, and with curl to nginx
(TLS 1.3, AES-256-GCM, PUT). They take turns; a time is that from a client's start to its end. A turn
in which other processes took more than a tenth of a core is thrown away, unless it is to be --loud.
Prints the medians and the ratio of Ferrylane's to the better of the other two. Needs root, for sshd, and installs the
section "peers" of packaging/debian-packages.txt.
END
}

arguments=("$@")
while [[ ${1:-} == -* ]]; do
    case $1 in
        --loud) loud=true ;;
        --size)
            size=$2
            shift
            ;;
        *)
            usage
            exit
            ;;
    esac
    shift
done
if [[ -z ${FERRYLANE_PEERS:-} ]]; then
    "$project/tools/install-packages.sh" peers
    FERRYLANE_PEERS=1 exec unshare --net --mount --pid --fork --kill-child --mount-proc "$0" "${arguments[@]}"
fi
programs=$(cd "$project" && cd "${1:-build/bench}/bin" && pwd)
folder=$(mktemp -d -p /dev/shm)
trap 'rm -rf "$folder"' EXIT
chmod 755 "$folder"
ip link set lo up
mount -t tmpfs none /run
mkdir /run/sshd "$folder/into"

# wait_for PORT: until somebody listens there.
wait_for() {
    for ((i = 0; i < 200; i++)); do
        ! ss --listening --tcp --numeric --no-header "sport = :$1" | grep -q . || return 0
        sleep 0.1
    done
    echo "peers.sh: nobody listens on port $1" >&2
    exit 1
}

start_ferrylane() {
    export HOME=$folder/home XDG_RUNTIME_DIR=$folder/home QT_QPA_PLATFORM=offscreen
    unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_STATE_HOME
    mkdir -m 700 "$HOME"
    mkdir -p "$HOME/.config/Ferrylane"
    printf '[General]\nFerrylaneReceiveFolder=%s\n' "$folder/into" \
        > "$HOME/.config/Ferrylane/settings.ini"
    "$programs/ferrylane" 2> /dev/null &
    wait_for 8788
}

start_sshd() {
    ssh-keygen -q -t ed25519 -N '' -f "$folder/key"
    cat > "$folder/sshd.conf" << END
ListenAddress 127.0.0.1:2222
HostKey $folder/key
AuthorizedKeysFile $folder/key.pub
PermitRootLogin yes
StrictModes no
PidFile none
Subsystem sftp internal-sftp
END
    /usr/sbin/sshd -D -f "$folder/sshd.conf" 2> /dev/null &
    wait_for 2222
}

start_nginx() {
    openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=localhost \
        -addext subjectAltName=IP:127.0.0.1 -keyout "$folder/tls.key" -out "$folder/tls.pem" \
        2> /dev/null
    cat > "$folder/nginx.conf" << END
daemon off;
user root;
worker_processes 1;
pid $folder/nginx.pid;
error_log stderr crit;
events {}
http {
    access_log off;
    client_body_temp_path $folder/body;
    server {
        listen 127.0.0.1:8443 ssl;
        ssl_certificate $folder/tls.pem;
        ssl_certificate_key $folder/tls.key;
        ssl_protocols TLSv1.3;
        ssl_conf_command Ciphersuites TLS_AES_256_GCM_SHA384;
        client_max_body_size 0;
        location / {
            root $folder/into;
            dav_methods PUT;
        }
    }
}
END
    nginx -c "$folder/nginx.conf" 2> /dev/null &
    wait_for 8443
}

put_with_ferrylane() {
    "$programs/ferrylane-phone" upload --local --name phone "$1" > /dev/null
}

put_with_scp() {
    scp -q -P 2222 -i "$folder/key" -c aes256-gcm@openssh.com -o UserKnownHostsFile=/dev/null \
        -o StrictHostKeyChecking=no -o LogLevel=ERROR "$1" root@127.0.0.1:"$folder/into/scp"
}

put_with_curl() {
    curl -sS --fail --tlsv1.3 --cacert "$folder/tls.pem" -T "$1" https://127.0.0.1:8443/curl
}

# Processor time that others have taken so far, in hundredths of a second, the host included.
others() {
    cat /proc/[0-9]*/stat 2> /dev/null | sed 's/.*) //' | awk '
        {own += $12 + $13 + $14 + $15}
        END {getline < "/proc/stat"; print $2 + $3 + $4 + $9 - own}'
}

# turn CLIENT: prints how many milliseconds it took; fails when others were busy. What it is going
# to use is touched just before: a virtual machine's free memory belongs to its host.
turn() {
    local begin before took
    head -c "${size}M" /dev/zero > "$folder/into/touched"
    rm "$folder/into/touched"
    cat "$folder/file" > /dev/null
    before=$(others)
    begin=$(date +%s%N)
    "put_with_$1" "$folder/file" >&2 || exit
    took=$((($(date +%s%N) - begin) / 1000000))
    find "$folder/into" -type f -size "${size}M" | grep -q . || exit
    rm -r "${folder:?}"/into/*
    echo "$took"
    $loud || (((($(others) - before) * 10) * 10 <= took))
}

declare -A times=()
thrown_away=0
start_ferrylane
start_sshd
start_nginx
head -c "${size}M" /dev/urandom > "$folder/file"
for ((run = 0; run <= runs; run++)); do
    for client in ferrylane scp curl; do
        until took=$(turn "$client") || [[ -z $took ]]; do
            echo "thrown away: others were busy while $client took $took ms" >&2
            if ((++thrown_away > 6 * runs)); then
                echo "peers.sh: this machine is not quiet enough" >&2
                exit 1
            fi
        done
        [[ -n $took ]] || { echo "peers.sh: $client failed" >&2 && exit 1; }
        # The first turn of each is for nothing.
        if ((run > 0)); then times[$client]+="$took "; fi
    done
done

# median CLIENT: MB a second.
median() {
    tr ' ' '\n' <<< "${times[$1]}" | sed '/^$/d' | sort -n | sed -n "$((runs / 2 + 1))p" \
        | awk -v size="$size" '{printf "%.0f", size * 1048.576 / $1}'
}

ours=$(median ferrylane)
scp=$(median scp)
curl=$(median curl)
cat << END
$(hostname), $(nproc) x $(sed -n 's/^model name.*: //p' /proc/cpuinfo | head -n 1); $size MiB, $runs turns each, $thrown_away thrown away

| from memory into memory, both ends here         | MB/s, median |
| ----------------------------------------------- | ------------ |
| ferrylane-phone to ferrylane                    | $(printf %12s "$ours") |
| scp -c aes256-gcm@openssh.com to sshd           | $(printf %12s "$scp") |
| curl -T to nginx, TLS 1.3                       | $(printf %12s "$curl") |
| ferrylane / the better of the others            | $(awk -v a="$ours" -v b="$scp" -v c="$curl" 'BEGIN {printf "%12.2f", a / (b > c ? b : c)}') |

Ferrylane also checks a digest of the whole file and syncs it before it answers; the others do
neither.
END
