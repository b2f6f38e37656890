# Sourced by the scripts that need tools. Installs the Debian packages that are missing, and calls
# no package manager at all when there are none, so that a second run needs no network.

needed_packages=(
    cmake ninja-build g++ git python3
    g++-mingw-w64-x86-64 binutils-mingw-w64-x86-64 doctest-dev
    clang clang-tidy clang-format
    libcli11-dev nlohmann-json3-dev
    wine64 xvfb imagemagick fonts-dejavu-core chromium
    osslsigncode openssl python3-markdown-it
)

as_root() {
    if ((EUID == 0)); then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "this needs root or sudo"
        return 1
    fi
}

# One package per call only when the call for all of them has failed: then it tells which.
install_package() {
    local output
    if ! output=$(as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "$1" 2>&1); then
        printf 'setup: package %s could not be installed: %s\n' "$1" \
            "$(printf '%s\n' "$output" | grep -v '^$' | tail -n 1)" >&2
        return 1
    fi
}

install_missing_packages() {
    local installed package missing=()
    installed=$(dpkg-query -W -f '${db:Status-Abbrev}|${Package}\n' "${needed_packages[@]}" \
        2>/dev/null || true)
    for package in "${needed_packages[@]}"; do
        grep -Fqx "ii |$package" <<<"$installed" || missing+=("$package")
    done
    ((${#missing[@]} == 0)) && return 0
    if ! command -v apt-get >/dev/null; then
        printf 'setup: package %s could not be installed: there is no apt-get here\n' \
            "${missing[@]}" >&2
        return 1
    fi
    printf 'setup: installing %s\n' "${missing[*]}"
    # A failing update is no failure yet: what is needed may be known already.
    as_root apt-get update -q >/dev/null 2>&1 || true
    if ! as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null 2>&1; then
        for package in "${missing[@]}"; do
            install_package "$package" || return 1
        done
    fi
}
