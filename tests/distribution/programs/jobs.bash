sleep 100 & kill -TERM $!; wait $!; echo terminated $?
set -m
sleep 100 & kill -STOP %1; sleep 0.3; jobs
kill -CONT %1; kill -KILL %1; wait %1 2>/dev/null; echo killed $?
trap 'echo child ended' CHLD; (exit 3) & wait; trap - CHLD
coproc sed -u s/a/b/; echo through a coprocess >&"${COPROC[1]}"; read -r line <&"${COPROC[0]}"; echo "$line"
exec {COPROC[1]}>&-; wait
cat <(echo one) <(echo two) <<<ignored
trap 'echo interrupted; exit 42' INT
kill -INT $$
