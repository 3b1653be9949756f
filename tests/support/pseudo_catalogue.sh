#!/bin/sh
# pseudo_catalogue.sh TEMPLATE FOLDER: writes FOLDER/qps/LC_MESSAGES/annivo.mo, a language in which
# every text is accented, two fifths longer and between marks of the direction from right to left,
# so that a text which is not translated, cut or assembled shows.
set -eu
mkdir -p "$2/qps/LC_MESSAGES"
msgen --lang=qps "$1" |
  sed 's/nplurals=INTEGER; plural=EXPRESSION/nplurals=2; plural=n != 1/; s/charset=CHARSET/charset=UTF-8/' |
  msgfilter --keep-header perl -CS -Mutf8 -0777 -pe '
    my $more = "·" x int(length($_) * 0.4 + 0.5);
    tr/aeiouyAEIOUYcnsCNS/áéíóúýÁÉÍÓÚÝćńśĆŃŚ/;
    my $end = s/\n\z// ? "\n" : "";
    $_ = "\x{200F}$_$more\x{200F}$end";' |
  msgfmt -o "$2/qps/LC_MESSAGES/annivo.mo" -
