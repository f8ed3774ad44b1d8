# Functions that fetch packages and sources of Debian into build/, and leave the system's own packages as they are.

# private_apt DIRECTORY [ARCHITECTURE]: makes a configuration of apt in DIRECTORY, where nothing is installed.
private_apt() {
    local directory=$1 architecture=${2-$(dpkg --print-architecture)} list
    mkdir -p "$directory"/{sources,lists/partial,cache/archives/partial}
    for list in /etc/apt/sources.list.d/*.sources; do
        [[ ! -e $list ]] || sed 's/^Types:.*/Types: deb deb-src/' "$list" >"$directory/sources/${list##*/}"
    done
    for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [[ ! -e $list ]] || sed -n 's/^deb\( .*\)/deb\1\ndeb-src\1/p' "$list" >"$directory/sources/${list##*/}"
    done
    [[ ! -e $directory/sources/sources.list ]] || mv "$directory/sources/sources.list" "$directory/sources/main.list"
    : >"$directory/status"
    cat >"$directory/apt.conf" <<END
Dir::Etc::SourceList "/dev/null";
Dir::Etc::SourceParts "$directory/sources";
Dir::State "$directory";
Dir::State::Lists "$directory/lists";
Dir::State::Status "$directory/status";
Dir::Cache "$directory/cache";
APT::Architecture "$architecture";
APT::Architectures { "$architecture"; };
APT::Install-Recommends "false";
APT::Sandbox::User "root";
END
    export APT_CONFIG=$directory/apt.conf
    # A repository that lacks the architecture is an error here; if it was needed, the next step fails.
    apt-get -qq update >"$directory/update.log" 2>&1 || true
}

# unpack_packages DIRECTORY PACKAGE...: unpacks the packages and all that they need. Runs none of their scripts.
unpack_packages() {
    local root=$1 archives=${APT_CONFIG%/*}/cache/archives package link
    shift
    quietly apt-get -qq --yes --download-only install "$@"
    mkdir -p "$root"
    for package in "$archives"/*.deb; do
        dpkg -x "$package" "$root"
    done
    # An absolute link would leave the directory.
    find "$root" -type l -lname '/*' -print0 | while IFS= read -r -d '' link; do
        ln -sfnr "$root$(readlink "$link")" "$link"
    done
}

# unpack_source PACKAGE: unpacks the source of a package in the current directory. Some mirrors lack the newest version.
unpack_source() {
    local version
    while IFS= read -r version; do
        [[ -z $(compgen -G "$1-*/") ]] || return 0
        apt-get -qq --only-source source "$1=$version" >"$1.log" 2>&1 || true
    done < <(apt-cache showsrc --only-source "$1" | sed -n 's/^Version: //p' | sort -rV; echo)
    fail "the source of $1 cannot be fetched: $(<"$1.log")"
}
