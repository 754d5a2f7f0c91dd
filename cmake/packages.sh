# Sourced by ./run and ./test: steps, and the packages that a Debian 12 machine needs.

step() { printf '%s: %s\n' "$(basename "$0")" "$*"; }

fail() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# install_packages NAME...: installs those that are not there yet, as root or through sudo.
install_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    step "installing ${missing[*]}"
    local root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            fail "cannot install ${missing[*]}: neither root nor sudo here"
        root=(sudo)
    fi
    local log
    log=$(mktemp)
    if ! { "${root[@]}" apt-get update &&
        "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y \
            --no-install-recommends "${missing[@]}"; } >"$log" 2>&1 </dev/null; then
        local reason
        reason=$(grep -m1 '^E: ' "$log")
        rm -f "$log"
        fail "cannot install ${missing[*]}: ${reason:-apt-get failed}"
    fi
    rm -f "$log"
}

# install_node_packages FROM TO: installs in the folder TO what FROM/package.json names, unless it is
# there, and Node.js and npm where there are none.
install_node_packages() {
    local from=$1 to=$2 log
    if cmp -s "$from/package-lock.json" "$to/package-lock.json" && [ -d "$to/node_modules" ]; then
        return 0
    fi
    command -v node >/dev/null || install_packages nodejs
    command -v npm >/dev/null || install_packages npm
    step "installing the packages of $from/package.json"
    rm -rf "$to"
    mkdir -p "$to"
    cp "$from/package.json" "$to"
    log=$(mktemp)
    cp "$from/package-lock.json" "$to/package-lock.json"
    if ! (cd "$to" && npm ci --no-audit --no-fund --ignore-scripts) >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        rm -rf "$log" "$to"
        fail "cannot install the packages of $from/package.json"
    fi
    rm -f "$log"
}

# keep_in LOG: puts what it reads into LOG; on a terminal it shows how far a build is.
keep_in() {
    local line shown=
    while IFS= read -r line; do
        printf '%s\n' "$line" >&3
        if [[ -t 1 && $line =~ ^\[[0-9]+/[0-9]+\] ]]; then
            printf '\r%s' "${BASH_REMATCH[0]}"
            shown=1
        fi
    done 3>"$1"
    [ -z "$shown" ] || printf '\r\033[K'
}

# build PRESET TARGET [CMAKE-ARGUMENT...]: configures and builds; the compiler's words are shown when
# it fails.
build() {
    local preset=$1 target=$2 began=$SECONDS log status
    shift 2
    step "building $preset"
    log=$(mktemp)
    { cmake --preset "$preset" "$@" && cmake --build --preset "$preset" --target "$target"; } 2>&1 |
        keep_in "$log"
    status=${PIPESTATUS[0]}
    if [ "$status" -ne 0 ]; then
        cat "$log" >&2
        rm -f "$log"
        fail "building $preset failed"
    fi
    rm -f "$log"
    step "building $preset took $((SECONDS - began)) s"
}

build_packages=(cmake ninja-build g++ binutils-mingw-w64-x86-64
    libassimp-dev robin-map-dev zlib1g-dev nlohmann-json3-dev rapidjson-dev libcli11-dev
    libstb-dev libutfcpp-dev libgcrypt20-dev libjs-three)
test_packages=("${build_packages[@]}" libgtest-dev libgmock-dev assimp-testmodels python3
    python3-jsonschema python3-markdown-it python3-mdit-py-plugins
    g++-mingw-w64-x86-64-posix lld libz-mingw-w64-dev libgcrypt-mingw-w64-dev
    googletest dpkg-dev man-db mandoc wine64 fonts-wine xvfb make git parallel pkg-config chromium)
