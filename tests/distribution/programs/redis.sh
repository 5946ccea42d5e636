# A server with threads that forks a child to save, and its client.
socket=$PWD/socket
redis-server --port 0 --unixsocket "$socket" --io-threads 3 --save '' --loglevel warning \
  --dir "$PWD" --daemonize no >server.log &
while [ ! -S "$socket" ]; do sleep 0.1; done
{
  i=0
  while [ $i -lt 1000 ]; do
    i=$((i + 1))
    echo "SET key$i $((i * i))"
    echo "ZADD scores $((i * 7919 % 1000)) member$i"
  done
  echo 'MGET key1 key77 key1000'
  echo 'ZRANGE scores 0 4 WITHSCORES'
  echo 'EVAL "local s = 0 for i = 1, 500 do s = s + redis.call([[GET]], [[key]] .. i) end return s" 0'
  echo 'DBSIZE'
  echo 'BGSAVE'
} | redis-cli -s "$socket" | sort | uniq -c
while redis-cli -s "$socket" INFO | grep -q rdb_bgsave_in_progress:1; do sleep 0.1; done
redis-cli -s "$socket" SHUTDOWN NOSAVE
wait $!
echo "server ended with $?"
ls
