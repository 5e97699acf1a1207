# More repetitions than the configuration allows.
printf '{"message":"Order","fields":{"Items":[%s{}]}}' "$(printf '{},%.0s' $(seq 999))" | cvt2 generate -t toy
