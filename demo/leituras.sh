#!/bin/sh
# leituras.sh access|mysql [LAST-DAY]
# Writes the SQL of the station's pumps and of ninety closed days that end with LAST-DAY (YYYY-MM-DD, yesterday when it
# is left out). The same day always gives the same rows.
set -eu
here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
case ${1-} in
    access | mysql) backend=$1 ;;
    *)
        echo "usage: leituras.sh access|mysql [YYYY-MM-DD]" >&2
        exit 2
        ;;
esac
today=$(date +%Y-%m-%d)
last=${2-}
case $last in
    '' | [0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]) ;;
    *)
        echo "leituras.sh: not a day as YYYY-MM-DD: $last" >&2
        exit 2
        ;;
esac
LC_ALL=C awk -v backend="$backend" -v today="$today" -v last="$last" \
    -f "$here/comum.awk" -f "$here/tanques.awk" -f "$here/leituras.awk"
