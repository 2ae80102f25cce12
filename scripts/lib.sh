# Sourced by the scripts beside it: where the tree is, how much of the machine to use, and packages.

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
jobs=${VELTRA_JOBS:-$(nproc)}

# A compiler cache is used where there is one and never asked for.
if command -v ccache > /dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

say() { printf '%s\n' "$*"; }

die() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# quietly COMMAND... keeps what a command prints to itself unless the command fails.
quietly() {
  local output status=0
  output=$("$@" 2>&1) || status=$?
  [[ $status == 0 ]] || printf '%s\n' "$output" >&2
  return $status
}

# packages_of GROUP... prints the packages of the groups, one a line, in the order of packages.txt.
packages_of() {
  local group
  for group; do
    [[ $group == all ]] || grep -qxF "[$group]" "$root/scripts/packages.txt" || die "no such group of packages: $group"
  done
  awk -v wanted=" $* " '
    /^\[/ { group = substr($0, 2, length($0) - 2); next }
    /^#/ || NF == 0 { next }
    index(wanted, " " group " ") || (index(wanted, " all ") && group != "armhf" && group != "browse")' "$root/scripts/packages.txt"
}

# install_packages GROUP... installs what is missing of the groups. A machine that has everything is left alone: no
# index is fetched and no right to install is needed.
install_packages() {
  local wanted missing as_root=()
  wanted=$(packages_of "$@") || exit
  missing=$(comm -23 <(sort <<< "$wanted") \
    <(dpkg-query -W -f='${db:Status-Status} ${Package}\n' | sed -n 's/^installed //p' | sort -u))
  [[ -n $missing ]] || return 0

  say "Installing" $missing
  if [[ $(id -u) != 0 ]]; then
    command -v sudo > /dev/null || die "run as root: apt-get install --no-install-recommends" $missing
    as_root=(sudo)
    [[ -t 0 ]] || as_root+=(-n)   # nobody is there to type a password
  fi
  as_root+=(env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0)
  # One source out of reach need not matter: what cannot be had fails below.
  "${as_root[@]}" update < /dev/null || say "Not every package index could be fetched."
  "${as_root[@]}" install --yes --no-install-recommends $missing < /dev/null > /dev/null ||
    die "could not install; as root that is: apt-get install --no-install-recommends" $missing
}

# page_modules FOLDER: what drives a page in a browser and looks for what keeps people out, in FOLDER/node_modules.
page_modules() {
  command -v npm > /dev/null || install_packages browse
  [[ -d $1/node_modules/axe-core && -d $1/node_modules/puppeteer-core ]] ||
    quietly npm install --silent --no-save --no-audit --no-fund --ignore-scripts --prefix "$1" axe-core@4.14.1 puppeteer-core@25.16.0
}
