# What the set-up scripts share: how they report, install Debian packages and fetch sources. Sourced,
# with `root` set to the project's folder.
deps="$root/.deps"
log="$deps/log"
mkdir -p "$log"

fail() {
  printf 'setup: %s\n' "$1" >&2
  exit 1
}

step() { printf 'setup: %s\n' "$1"; }

# What a log says of a failure: its first complaint, or else its last line.
complaint() { # file
  grep -m 1 -iE '(error|not found|failed|cannot|unable)' "$1" || tail -n 1 "$1"
}

# Runs a command with its output in a log file; a failure ends in one sentence that names the file.
quietly() { # name, command...
  local name=$1
  shift
  "$@" >"$log/$name.log" 2>&1 || fail "$name failed; its log $log/$name.log says: $(complaint "$log/$name.log")"
}

# Installs those of the named Debian packages that the machine does not have.
install_packages() { # package...
  local package missing=()
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  [ "$(id -u)" = 0 ] ||
    fail "these Debian packages are missing and only root may install them: run 'apt-get install ${missing[*]}' as root, then this again"
  step "installing ${#missing[@]} Debian packages (about a minute)"
  export DEBIAN_FRONTEND=noninteractive
  quietly apt-update apt-get update
  quietly apt-install apt-get install -y --no-install-recommends "${missing[@]}"
}

# Sources of another suite, through an apt configuration of our own, so that the machine's own
# package choice stays as it is. The mirror is the one that the machine itself uses.
prepare_sources() {
  [ -f "$deps/apt/ready" ] && return 0
  step "reading the list of Debian's source packages (a few seconds)"
  local mirror keyring
  mirror=$(apt-get indextargets --format '$(SITE) $(RELEASE)' 'Created-By: Packages' |
    awk '$2 !~ /security|updates/ {print $1; exit}')
  [ -n "$mirror" ] || fail "apt on this machine knows no Debian mirror; add one to its sources"
  keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  mkdir -p "$deps"/apt/{lists/partial,cache/archives/partial,etc}
  local suite
  for suite in bookworm trixie sid experimental; do
    printf 'deb-src [signed-by=%s] %s %s main\n' "$keyring" "$mirror" "$suite"
  done >"$deps/apt/etc/sources.list"
  cat >"$deps/apt/apt.conf" <<CONF
Dir::Etc::sourcelist "$deps/apt/etc/sources.list";
Dir::Etc::sourceparts "-";
Dir::State::lists "$deps/apt/lists";
Dir::Cache "$deps/apt/cache";
APT::Sandbox::User "";
Acquire::Languages "none";
CONF
  APT_CONFIG="$deps/apt/apt.conf" quietly source-lists apt-get update
  touch "$deps/apt/ready"
}

# Fetches and unpacks one source package into a folder of its own. A suite in motion lists versions
# whose files a mirror does not have (yet, or any more), so each listed one is tried, newest first.
fetch_source() { # package, folder, how the version starts (any)
  local version versions
  export APT_CONFIG="$deps/apt/apt.conf"
  versions=$(apt-cache showsrc --only-source "$1" |
    awk -v start="${3:-}" '/^Version:/ && index($2, start) == 1 {print $2}' | sort -rVu)
  [ -n "$versions" ] || fail "Debian's source list holds no package $1 ${3:-}"
  for version in $versions; do
    rm -rf "$2"
    mkdir -p "$2"
    if (cd "$2" && apt-get source --only-source "$1=$version") >"$log/fetch-$1.log" 2>&1; then
      unset APT_CONFIG
      return 0
    fi
  done
  fail "no version of the source package $1 could be fetched; its log $log/fetch-$1.log says: $(complaint "$log/fetch-$1.log")"
}
