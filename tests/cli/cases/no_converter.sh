# A message that no converter takes to the format: the line says which formats there are.
printf 'Ping,7,8' | cvt2 convert -f named -t invoice
printf 'Ping,7,8' | cvt2 parse -f named --json | sed s/Ping/Invoice/ | sed 's/"fields":.*/"fields":{}}/' | cvt2 generate -t invoice
