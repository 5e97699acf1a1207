#!/usr/bin/env bash
# Checks that a unit of the library includes only headers of units that stand above it, in the order of the
# table in ARCHITECTURE.md. Private headers that two neighbours share count as the lower one's.
set -u
dir=${1:?usage: unit_order.sh SOURCE_FOLDER}/src/cvt/cvt2

# unit or header, and its floor
floors='
cvt_def 0
cvt_log 0
cvt_guard 0
cvt_handle 8
cvt_index 0
cvt_bits 0
cvt_heap 0
cvt_sql_text 0
cvt_memory 1
cvt_heap_pool 1
cvt_string 2
cvt_xml_blanks 3
cvt_xml 3
stt 4
stt_bind 4
cvt_definition 5
stt_cvt_message 6
cvt_struct_loop 6
cvt_message 6
cvt_convert_parts 7
cvt_convert_sql 7
cvt_convert_value 7
cvt_convert_plan 7
cvt_convert_rule 7
cvt_convert_bind 7
cvt_convert 7
cvt_identify 8
cvt_plug 9
cvt_init 10
cvt 11
cvt_itf 11
cvt_interface 12
'
# cvt.h is the public face of the three topmost units
face=9

floor() { awk -v name="$1" '$1 == name { print $2; found = 1 } END { exit !found }' <<<"$floors"; }

checked=0
failed=0
for file in "$dir"/*.cpp "$dir"/*.h; do
  name=$(basename "$file"); name=${name%.*}
  own=$(floor "$name") || { echo "$file: not in the order of units"; failed=1; continue; }
  while read -r header; do
    name=${header%.h}
    if [ "$name" = cvt ]; then theirs=$face; else theirs=$(floor "$name") || continue; fi
    # one public header each for the definition model, and for the XML layer and the binding above it
    [ "$name" = cvt_message ] && theirs=5
    [ "$name" = stt ] && theirs=3
    checked=$((checked + 1))
    if [ "$theirs" -gt "$own" ]; then
      echo "$file: includes $header, which stands below it in the order of units"
      failed=1
    fi
  done < <(sed -n 's/^#include "\(.*\)"$/\1/p' "$file")
done
echo "$checked includes checked"
[ "$checked" -gt 30 ] && [ "$failed" -eq 0 ]
