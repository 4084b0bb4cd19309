# Throwaway database servers for scripts/test and scripts/bench; sourced, not run.
#
# The sourcing script defines say and die and sets tmp to a fresh folder (mode 755, so
# that the postgres account reaches its folder inside) before sourcing this file, and a
# bash array timings, to which start and stop times are added. start_postgres starts a
# PostgreSQL 15 on 127.0.0.1 (a free port, in $pg_port) with the role and database
# "quillet" (password "quillet"); start_mariadb the same for MariaDB ($maria_port). The
# stop functions do nothing when their server is not running; call them on every way out.

# Microseconds since the epoch, for the timings printed at the end.
now_us() {
    local t=$EPOCHREALTIME
    echo "${t//[.,]/}"
}
secs() { printf '%d.%02d' $(($1 / 1000000)) $(($1 % 1000000 / 10000)); }

pg_bin=/usr/lib/postgresql/15/bin
pg_data=$tmp/pg/data
pg_sock=$tmp/pg/sock
maria_dir=$tmp/maria
maria_sock=$maria_dir/mariadb.sock
maria_pid=

# PostgreSQL refuses to run as root: as root, its programs run under Debian's
# postgres account; otherwise as the calling user.
if [ "$(id -u)" -eq 0 ]; then
    as_postgres() { (cd "$tmp" && runuser -u postgres -- "$@"); }
    maria_user=(--user=root)
else
    as_postgres() { (cd "$tmp" && "$@"); }
    maria_user=()
fi

stop_postgres() {
    [ -f "$pg_data/postmaster.pid" ] || return 0
    local t0 pid
    t0=$(now_us)
    pid=$(head -n 1 "$pg_data/postmaster.pid" 2>/dev/null || true)
    if ! as_postgres "$pg_bin/pg_ctl" -D "$pg_data" -m fast -w -t 30 -s stop; then
        say "PostgreSQL did not stop in time; killing it"
        [ -n "$pid" ] && kill -KILL "$pid" 2>/dev/null
    fi
    timings+=("PostgreSQL stopped in $(secs $(($(now_us) - t0))) s")
}

stop_mariadb() {
    local pid=$maria_pid t0 i
    if [ -z "$pid" ] && [ -f "$maria_dir/mariadb.pid" ]; then
        pid=$(cat "$maria_dir/mariadb.pid" 2>/dev/null || true)
    fi
    [ -n "$pid" ] && kill -0 "$pid" 2>/dev/null || return 0
    t0=$(now_us)
    kill -TERM "$pid" 2>/dev/null
    for ((i = 0; i < 300; i++)); do
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.1
    done
    if kill -0 "$pid" 2>/dev/null; then
        say "MariaDB did not stop in time; killing it"
        kill -KILL "$pid" 2>/dev/null
    fi
    wait "$pid" 2>/dev/null
    timings+=("MariaDB stopped in $(secs $(($(now_us) - t0))) s")
}

# True when something already listens on the loopback port.
port_in_use() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }

free_port() {
    local p i
    for ((i = 0; i < 200; i++)); do
        p=$((20000 + (RANDOM * 32768 + RANDOM) % 40000))
        [ "$p" = "${pg_port:-}" ] && continue
        port_in_use "$p" || {
            echo "$p"
            return 0
        }
    done
    die "no free TCP port found on 127.0.0.1"
}

show_log() {
    [ -f "$1" ] || return 0
    echo "---- last lines of $1" >&2
    tail -n 30 "$1" >&2
    echo "----" >&2
}

# ---------------------------------------------------------------- PostgreSQL
start_postgres() {
    local t0 i
    t0=$(now_us)
    mkdir -p "$tmp/pg"
    [ "$(id -u)" -ne 0 ] || chown postgres:postgres "$tmp/pg"
    as_postgres "$pg_bin/initdb" -D "$pg_data" -U postgres -E UTF8 --locale=C.UTF-8 \
        --auth-local=trust --auth-host=scram-sha-256 --no-sync >"$tmp/pg/initdb.log" 2>&1 ||
        {
            show_log "$tmp/pg/initdb.log"
            die "initdb failed"
        }
    as_postgres mkdir -p "$pg_sock"
    for _ in 1 2 3 4 5; do
        pg_port=$(free_port)
        if as_postgres "$pg_bin/pg_ctl" -D "$pg_data" -l "$tmp/pg/server.log" -w -t 60 -s \
            -o "-c listen_addresses=127.0.0.1 -p $pg_port -k $pg_sock -c fsync=off -c synchronous_commit=off -c full_page_writes=off" \
            start; then
            break
        fi
        if [ ! -f "$pg_data/postmaster.pid" ] && grep -q 'could not bind\|already in use' "$tmp/pg/server.log" 2>/dev/null; then
            say "port $pg_port was taken; trying another"
            continue
        fi
        show_log "$tmp/pg/server.log"
        die "PostgreSQL did not start"
    done
    [ -f "$pg_data/postmaster.pid" ] || die "PostgreSQL did not start (no free port)"
    for ((i = 0; i < 300; i++)); do
        "$pg_bin/pg_isready" -q -h 127.0.0.1 -p "$pg_port" -t 1 && break
        sleep 0.1
    done
    "$pg_bin/pg_isready" -q -h 127.0.0.1 -p "$pg_port" -t 1 || {
        show_log "$tmp/pg/server.log"
        die "PostgreSQL does not accept connections on 127.0.0.1:$pg_port"
    }
    as_postgres "$pg_bin/psql" -X -q -h "$pg_sock" -p "$pg_port" -U postgres -d postgres \
        -v ON_ERROR_STOP=1 \
        -c "CREATE ROLE quillet LOGIN PASSWORD 'quillet'" \
        -c "CREATE DATABASE quillet OWNER quillet" ||
        die "could not create the PostgreSQL role and database"
    timings+=("PostgreSQL 15 ready on 127.0.0.1:$pg_port in $(secs $(($(now_us) - t0))) s")
    say "${timings[-1]}"
}

# ---------------------------------------------------------------- MariaDB
maria_admin() { mariadb-admin --no-defaults --socket="$maria_sock" -uroot --connect-timeout=2 "$@"; }

start_mariadb() {
    local t0 i
    t0=$(now_us)
    mkdir -p "$maria_dir/data" "$maria_dir/tmp"
    mariadb-install-db --no-defaults --auth-root-authentication-method=normal \
        --datadir="$maria_dir/data" "${maria_user[@]}" --skip-test-db --skip-name-resolve \
        >"$maria_dir/install.log" 2>&1 ||
        {
            show_log "$maria_dir/install.log"
            die "mariadb-install-db failed"
        }
    for _ in 1 2 3 4 5; do
        maria_port=$(free_port)
        : >"$maria_dir/server.log"
        mariadbd --no-defaults --datadir="$maria_dir/data" --tmpdir="$maria_dir/tmp" \
            --socket="$maria_sock" --port="$maria_port" --bind-address=127.0.0.1 \
            --pid-file="$maria_dir/mariadb.pid" --log-error="$maria_dir/server.log" \
            "${maria_user[@]}" --skip-name-resolve --skip-log-bin \
            --innodb-buffer-pool-size=128M --innodb-log-file-size=48M \
            --innodb-flush-log-at-trx-commit=0 --character-set-server=utf8mb4 \
            --collation-server=utf8mb4_general_ci --lower-case-table-names=1 </dev/null >/dev/null 2>&1 &
        maria_pid=$!
        for ((i = 0; i < 600; i++)); do
            maria_admin ping >/dev/null 2>&1 && break
            kill -0 "$maria_pid" 2>/dev/null || break
            sleep 0.1
        done
        if kill -0 "$maria_pid" 2>/dev/null && maria_admin ping >/dev/null 2>&1; then
            break
        fi
        if ! kill -0 "$maria_pid" 2>/dev/null && grep -qi 'already in use\|Do you already have another' "$maria_dir/server.log"; then
            wait "$maria_pid" 2>/dev/null || true
            maria_pid=
            say "port $maria_port was taken; trying another"
            continue
        fi
        show_log "$maria_dir/server.log"
        die "MariaDB did not start or does not accept connections"
    done
    [ -n "$maria_pid" ] || die "MariaDB did not start (no free port)"
    mariadb --no-defaults --socket="$maria_sock" -uroot <<'SQL' || die "could not create the MariaDB user and database"
CREATE DATABASE quillet;
CREATE USER 'quillet'@'%' IDENTIFIED BY 'quillet';
CREATE USER 'quillet'@'localhost' IDENTIFIED BY 'quillet';
GRANT ALL PRIVILEGES ON quillet.* TO 'quillet'@'%';
GRANT ALL PRIVILEGES ON quillet.* TO 'quillet'@'localhost';
SQL
    timings+=("MariaDB $(mariadbd --version | sed -n 's/.*Ver \([^ -]*\).*/\1/p') ready on 127.0.0.1:$maria_port in $(secs $(($(now_us) - t0))) s")
    say "${timings[-1]}"
}

# The path of an ODBC driver library by its file name.
odbc_driver_path() {
    local f
    for f in /usr/lib/*/odbc/"$1" /usr/lib/odbc/"$1"; do
        [ -e "$f" ] && {
            echo "$f"
            return 0
        }
    done
    die "ODBC driver $1 not found under /usr/lib/*/odbc/"
}
