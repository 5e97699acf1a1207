#!/usr/bin/env bash
# Checks what the library leaves to its host: it starts no thread, takes no lock, and asks no environment variable.
set -u -o pipefail
dir=${1:?usage: process.sh SOURCE_FOLDER}/src/cvt/cvt2

environment='\b(secure_getenv|getenv|setenv|putenv|environ)\b'
threads='\b(pthread_create|thrd_create|fork|clone)\b|std::(jthread|thread|async)\b'
locks='\b(pthread_(mutex|rwlock|spin|cond|once)\w*|mtx_\w+|call_once)\b'
locks+='|std::(\w*mutex|lock_guard|unique_lock|scoped_lock|shared_lock|condition_variable|atomic\w*)\b'

files=("$dir"/*.cpp "$dir"/*.h)
[ "${#files[@]}" -gt 30 ] || { echo "$dir: only ${#files[@]} files"; exit 1; }
failed=0
for file in "${files[@]}"; do
  sed 's://.*::; s:/\*.*\*/::' "$file" | grep -nE "$environment|$threads|$locks" | sed "s|^|$file:|" && failed=1
done
echo "${#files[@]} files checked"
exit "$failed"
