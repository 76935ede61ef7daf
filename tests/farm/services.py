# SPDX-License-Identifier: MIT
"""Services for the farms, on loopback, with keys, configuration, folders and ports of their own.

Each is a child of this program and ends with it, however it ends.
"""
import ctypes
import os
import pwd
import signal
import socket
import subprocess
import time

LIMIT = 120  # seconds for a service to answer
PR_SET_PDEATHSIG = 1

libc = ctypes.CDLL(None)


class NotStarted(Exception):
    """A sentence about a service that does not run here."""


def end_with_parent():
    libc.prctl(PR_SET_PDEATHSIG, signal.SIGTERM)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def write(path, text, mode=0o600):
    path.write_text(text)
    path.chmod(mode)
    return path


def start(running, name, words, log, is_up, environment=None):
    """Starts a service and waits until it answers; it stays in `running`, to be ended by stop_all."""
    with open(log, "ab") as output:
        process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=output, stderr=output, env=environment,
                                   preexec_fn=end_with_parent)
    running.append(process)
    limit = time.monotonic() + LIMIT
    while not is_up():
        if process.poll() is not None or time.monotonic() > limit:
            lines = log.read_text(errors="replace").strip().splitlines() or ["it says nothing"]
            raise NotStarted("%s cannot be started here: %s (log: %s)" % (name, lines[-1], log))
        time.sleep(0.05)


def stop_all(running):
    """Ends the services, the last one first."""
    for process in reversed(running):
        process.terminate()
        try:
            process.wait(30)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
    running.clear()


def answers(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


def start_ssh(running, folder, hosts):
    """An ssh server, and a client's configuration in which it has all these names: the client's command line."""
    folder.mkdir(parents=True)
    folder.chmod(0o700)
    port, user = free_port(), pwd.getpwuid(os.getuid()).pw_name
    # With privileges the server locks its first, unprivileged part into this folder, which a boot makes.
    if os.getuid() == 0:
        os.makedirs("/run/sshd", mode=0o755, exist_ok=True)
    # What a user's shell reads when it starts takes no part.
    home = folder / "home"
    home.mkdir()
    for key in ("host_key", "user_key"):
        subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / key], check=True)
    write(folder / "authorized_keys", (folder / "user_key.pub").read_text())
    write(folder / "known_hosts", "[127.0.0.1]:%d %s" % (port, (folder / "host_key.pub").read_text()))
    write(folder / "sshd_config", """
Port %d
ListenAddress 127.0.0.1
HostKey %s/host_key
AuthorizedKeysFile %s/authorized_keys
AllowUsers %s
PermitRootLogin prohibit-password
PasswordAuthentication no
KbdInteractiveAuthentication no
UsePAM no
StrictModes no
PidFile none
MaxStartups 100
MaxSessions 100
SetEnv HOME=%s
ForceCommand cd && exec /bin/bash -c "$SSH_ORIGINAL_COMMAND"
""" % (port, folder, folder, user, home))
    config = write(folder / "config", """
Host %s
HostName 127.0.0.1
HostKeyAlias [127.0.0.1]:%d
Port %d
User %s
IdentityFile %s/user_key
IdentitiesOnly yes
UserKnownHostsFile %s/known_hosts
StrictHostKeyChecking yes
BatchMode yes
LogLevel ERROR
ControlMaster auto
ControlPath %s/%%n
ControlPersist 60
""" % (" ".join(hosts), port, port, user, folder, folder, folder))
    start(running, "The ssh server", ["/usr/sbin/sshd", "-D", "-e", "-f", str(folder / "sshd_config")],
          folder / "sshd.log", lambda: answers(port))
    client = ["ssh", "-F", str(config)]
    for host in hosts:
        tried = subprocess.run(client + [host, "true"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE, text=True)
        if tried.returncode != 0:
            raise NotStarted("The ssh server lets nobody in: %s(log: %s)" % (tried.stderr, folder / "sshd.log"))
    return client


def stop_ssh(client, hosts):
    """Ends the connections that the client keeps."""
    for host in hosts:
        subprocess.run(client + ["-O", "exit", host], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)


def start_slurm(running, folder):
    """Slurm's controller and one node; the environment of its clients."""
    for name in ("state", "spool"):
        (folder / name).mkdir(parents=True)
    folder.chmod(0o755)
    key = folder / "munge.key"
    key.write_bytes(os.urandom(128))
    key.chmod(0o600)
    munge = folder / "munge.socket"
    if len(str(munge)) > 100:
        raise NotStarted("Slurm cannot be started here: the path of its folder is too long (%s)" % folder)
    start(running, "munged", ["/usr/sbin/munged", "--foreground", "--force", "--socket=%s" % munge,
                              "--key-file=%s" % key, "--pid-file=%s/munge.pid" % folder,
                              "--log-file=%s/munge.log" % folder, "--seed-file=%s/munge.seed" % folder],
          folder / "munged.log", munge.exists)
    user, host, port = pwd.getpwuid(os.getuid()).pw_name, socket.gethostname().split(".")[0], free_port()
    config = write(folder / "slurm.conf", """
ClusterName=kestrel
SlurmctldHost=%s(127.0.0.1)
SlurmUser=%s
SlurmdUser=%s
SlurmctldPort=%d
AuthType=auth/munge
AuthInfo=socket=%s
CredType=cred/munge
StateSaveLocation=%s/state
SlurmdSpoolDir=%s/spool
SlurmctldPidFile=%s/slurmctld.pid
SlurmdPidFile=%s/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SchedulerType=sched/builtin
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SwitchType=switch/none
MpiDefault=none
ReturnToService=2
SlurmdParameters=config_overrides
KillWait=2
NodeName=node NodeHostname=%s NodeAddr=127.0.0.1 Port=%d CPUs=2 State=UNKNOWN
PartitionName=all Nodes=node Default=YES MaxTime=INFINITE State=UP
""" % (host, user, user, port, munge, folder, folder, folder, folder, host, free_port()), 0o644)
    environment = dict(os.environ, SLURM_CONF=str(config))
    start(running, "Slurm's controller", ["/usr/sbin/slurmctld", "-D", "-f", str(config)], folder / "slurmctld.log",
          lambda: answers(port), environment)

    def is_idle():
        shown = subprocess.run(["sinfo", "-h", "-o", "%T"], env=environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        return shown.stdout.strip() == "idle"

    start(running, "Slurm's node", ["/usr/sbin/slurmd", "-D", "-N", "node", "-f", str(config)],
          folder / "slurmd.log", is_idle, environment)
    return environment


def stop_slurm(environment):
    """Ends all jobs, and waits until none runs."""
    subprocess.run(["scancel", "--signal=KILL", "--full", "-p", "all"], env=environment, stdin=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)
    subprocess.run(["scancel", "-p", "all"], env=environment, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    limit = time.monotonic() + LIMIT
    while time.monotonic() < limit:
        left = subprocess.run(["squeue", "-h"], env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True)
        if left.returncode != 0 or not left.stdout.strip():
            return
        time.sleep(0.1)
