# Without -m the pipeline names the message; fields of the same name are told apart.
printf 'Ping,7,8' | cvt2 parse -f named
printf 'Ping,7,8' | cvt2 parse -f named --json
