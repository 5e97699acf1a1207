#!/usr/bin/env bash
# The installed tree works wherever it is moved, and a program builds against nothing but what is installed.
#
#   install.sh BUILD_DIR SOURCE_DIR CC [FLAG...]
set -eu
build=$1 source=$2 cc=$3
shift 3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "$*" >&2; exit 1; }

cmake --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
config=$source/examples/nacha
file=$config/data/iat-debit.ach

lib=$(dirname "$(find "$work/moved" -name libcvt2.so)")
clean=(env -i)
# The address sanitizer hides from the loader that it is the library that opens a plug-in.
case "$*" in *sanitize=address*) clean+=("LD_LIBRARY_PATH=$lib/cvt2") ;; esac

"${clean[@]}" "$work/moved/bin/cvt2" convert -c "$config" -m NachaFile -f nacha -t pain "$file" >"$work/xml" ||
  fail "the installed command does not convert"
grep -q '</Document>' "$work/xml" || fail "the installed command wrote no document"

# A plug-in that is just being copied is refused where the loader's own search finds it, not mapped; one of its name in
# the current folder is none of its business.
plug=$lib/cvt2/libcvt_plug_fix.so
mkdir "$work/elsewhere"
head -c 5000 "$plug" >"$work/elsewhere/libcvt_plug_fix.so"
(cd "$work/elsewhere" && "${clean[@]}" "$work/moved/bin/cvt2" convert -c "$config" -m NachaFile -f nacha -t pain "$file") |
  cmp - "$work/xml" || fail "a file in the current folder is taken for a plug-in"
mv "$plug" "$work/whole"
cp "$work/elsewhere/libcvt_plug_fix.so" "$plug"
"${clean[@]}" "$work/moved/bin/cvt2" convert -c "$config" -m NachaFile -f nacha -t pain "$file" >"$work/cut" 2>&1 &&
  fail "a plug-in that is cut converts"
grep -q "dlopen Err:$work/.*/cvt2/libcvt_plug_fix.so: the file ends before its last segment: copy it anew!!" "$work/cut" ||
  fail "a plug-in that is cut ends with: $(cat "$work/cut")"
mv "$work/whole" "$plug"

"$cc" "$@" -I"$work/moved/include/cvt2" "$source/examples/host/host.c" -o "$work/host" -L"$lib" -lcvt2 \
  -Wl,-rpath,"$lib" || fail "the example host does not build against the installed tree"
"${clean[@]}" "$work/host" "$config" "$file" | grep -q 'bytes of XML' || fail "the example host does not run"

# A module and its host, unless the framework is the real one.
[ -e "$lib/libfunction_plug_ctl.so" ] || exit 0
manager=$source/examples/manager
flags=(-I"$work/moved/include/cvt2" -L"$lib" -lfunction_plug_ctl -Wl,-rpath,"$lib")
"$cc" "$@" -shared -fPIC "$manager/module.c" "${flags[@]}" -o "$work/module.so" &&
  "$cc" "$@" "$manager/host.c" "${flags[@]}" -o "$work/manager_host" ||
  fail "the example module does not build against the installed tree"
"${clean[@]}" "$work/manager_host" "$lib/libcvt2.so" "$work/module.so" "$config" "$file" | cmp - "$work/xml" ||
  fail "the example module writes another document than the command"
