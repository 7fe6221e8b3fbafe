# Sourced by scripts that use a clean Debian root of this machine's release, made by debootstrap from apt's mirrors.
# Such a script calls `inNamespaces` on itself and makes the root there: no mount or process outlives it, however it
# ends, and its folder is removed.
# shellcheck shell=bash

# Prints why no root can be made here, or nothing.
whyNoRoot() {
    [ "$(id -u)" -eq 0 ] || { echo "this is not root"; return; }
    command -v debootstrap >/dev/null || { echo "debootstrap is not installed"; return; }
    unshare --mount --pid --fork true 2>/dev/null || { echo "mounts are not permitted here"; return; }
    [ -n "$(mirror)" ] || { echo "apt has no Debian mirror here"; return; }
    useProxies
    wget -q --spider --timeout=20 --tries=2 "$(mirror)dists/$(codename)/InRelease" || echo "apt's Debian mirror does not answer"
}

codename() {
    # shellcheck disable=SC1091
    (. /etc/os-release && echo "${VERSION_CODENAME:-}")
}

# Prints lines "LABEL URI SUITE COMPONENT" for apt's Debian repositories; others could hide a missing package.
repositories() {
    # shellcheck disable=SC2016
    apt-get indextargets --format '$(LABEL) $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 2>/dev/null | grep '^Debian' | sort -u
}

mirror() { repositories | awk -v codename="$(codename)" '$1 == "Debian" && $3 == codename { print $2; exit }'; }

useProxies() {
    local http_proxy_of_apt="" https_proxy_of_apt=""
    eval "$(apt-config shell http_proxy_of_apt Acquire::http::Proxy https_proxy_of_apt Acquire::https::Proxy)"
    [ -z "$http_proxy_of_apt" ] || export http_proxy=$http_proxy_of_apt
    [ -z "$https_proxy_of_apt" ] || export https_proxy=$https_proxy_of_apt
}

# inNamespaces SCRIPT ARGUMENT...: runs it with an empty folder in QZANNO_WORK, and exits with its exit code.
inNamespaces() {
    work=$(mktemp -d)
    inner=
    trap leaveNamespaces EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM HUP
    QZANNO_WORK=$work unshare --mount --pid --fork --kill-child --mount-proc "$@" &
    inner=$!
    local code=0
    wait "$inner" || code=$?
    inner=
    exit "$code"
}
leaveNamespaces() {
    # unshare ignores SIGTERM. Its child is the first process of the namespace, whose end kills all others.
    if [ -n "$inner" ]; then
        kill -KILL "$inner" || true
        wait "$inner" 2>/dev/null || true
    fi
    rm -rf "$work"
}

# makeRoot FOLDER, and inRoot COMMAND... in the last root made.
makeRoot() {
    root=$1
    useProxies
    echo "Making a clean root of $(codename)"
    debootstrap --variant=minbase "$(codename)" "$root" "$(mirror)" >"$root.log" 2>&1 || { tail -n 20 "$root.log" >&2; return 1; }
    # Copies this machine's apt configuration, including updates and proxies.
    repositories | sed -E 's/^[^ ]+/deb/' >"$root/etc/apt/sources.list"
    apt-config dump | grep -E '^Acquire::(https?|Check-Valid-Until|Check-Date|Retries|ForceIPv[46])\b' >"$root/etc/apt/apt.conf.d/99outside" || true
    mount -t proc proc "$root/proc"
    mount --rbind /sys "$root/sys"
    mount --rbind /dev "$root/dev"
    inRoot apt-get update -q >/dev/null
}
inRoot() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
