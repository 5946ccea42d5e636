import os
import signal
import subprocess

print(subprocess.run(["sed", "s/a/b/"], input=b"banana", stdout=subprocess.PIPE))
child = subprocess.Popen(["sleep", "100"])
child.send_signal(signal.SIGTERM)
print(child.wait())
print(os.spawnvp(os.P_WAIT, "dash", ["dash", "-c", "kill -KILL $$"]))
path = os.environ["PATH"].split(":")[0]
child = os.posix_spawn(path + "/dash", ["renamed", "-c", "echo $0 $X >&7; exit 5"], os.environ | {"X": "y"},
                       file_actions=[(os.POSIX_SPAWN_DUP2, 1, 7)])
print(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]))
try:
    subprocess.run(["no-such-program"])
except FileNotFoundError as error:
    print(error)
reader, writer = os.pipe()
if os.fork() == 0:
    os.dup2(writer, 1)
    os.execvp("sed", ["sed", "-n", "$=", __file__])
os.close(writer)
print(int(os.read(reader, 100)) > 20)
