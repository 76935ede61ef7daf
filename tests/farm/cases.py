# SPDX-License-Identifier: MIT
"""What the scripts of farm/ do with folders of pictures. Each case is a function of a Context and raises Failed."""
import os
import pathlib
import shutil
import subprocess

import processes
import services
from folder_watch import FolderWatch
from pictures import OPTIONS, Work

HOSTS = ["anna", "berta"]
SLURM_TASKS = 8


class Failed(Exception):
    pass


class Context:
    """What every case needs: the program, the scripts, a folder of its own, pictures with their results."""

    def __init__(self, kestrel, scripts, folder, bases):
        self.kestrel, self.scripts, self.folder, self.bases = kestrel, scripts, folder, bases
        home = folder / "home"
        (home / ".parallel").mkdir(parents=True)
        (home / ".parallel" / "will-cite").touch()
        self.environment = dict(os.environ, KESTREL=str(kestrel), HOME=str(home), JOBS="2")

    def start(self, words, **variables):
        """Starts a script of farm/ in a session of its own; what it says goes to the case's log."""
        environment = dict(self.environment, **variables)
        with open(self.folder / "log", "ab") as log:
            return subprocess.Popen([str(word) for word in words], cwd=self.folder, env=environment, stdout=log,
                                    stderr=log, stdin=subprocess.DEVNULL, start_new_session=True,
                                    preexec_fn=services.end_with_parent)

    def run(self, words, **variables):
        return self.start(words, **variables).wait()

    def refusal(self, words, **variables):
        """What a script says that is to fail."""
        done = subprocess.run([str(word) for word in words], cwd=self.folder, stdin=subprocess.DEVNULL,
                              env=dict(self.environment, **variables), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True)
        expect(done.returncode != 0, "%s should have failed" % words[0])
        return done.stdout


def expect(truth, sentence):
    if not truth:
        raise Failed(sentence)


def expect_all(work, watch):
    watch.close()
    faults = watch.faults + work.check()
    expect(not faults, "; ".join(faults[:5]))


def interrupted_and_resumed(context, work, words, stop=lambda: None, after=4, workers=True, leftover=True,
                            **variables):
    """A worker is killed, then the whole farm in the middle; run again, it makes what is missing, and only that."""
    watch = FolderWatch(work.results, lambda path: work.expected.get(path))
    try:
        farm = context.start(words, **variables)
        for count in (after // 2, after):
            watch.wait_for(count)
            if workers:
                processes.kill_one_worker(str(work.results), context.kestrel)
        stop()
        processes.kill_all(str(work.results), farm.pid)
        farm.wait()
        there = work.made()
        expect(after <= len(there) < len(work.expected), "the farm was not in the middle: %d of %d were there"
               % (len(there), len(work.expected)))
        if leftover:  # of a program that was killed while it wrote
            missing = sorted(set(work.expected) - set(there))[0]
            pathlib.Path(missing + ".kestrel-part").write_bytes(work.expected[missing][:100])
        result = context.run(words, **variables)
        expect(result == 0, "the resumed farm ended with %d" % result)
        again = work.made()
        changed = [path for path, facts in there.items() if again[path] != facts]
        expect(not changed, "%d of %d were made twice: %s" % (len(changed), len(there), changed[:3]))
        twice = [path for path, times in watch.appeared.items() if times != 1]
        expect(not twice, "appeared more than once: %s" % twice[:3])
    except BaseException:
        processes.kill_all(str(work.results))
        watch.close()
        raise
    expect_all(work, watch)


def local(context):
    """One machine, names of all kinds, a worker and then everything killed."""
    work = Work(context.bases, context.folder, 40)
    words = [context.scripts / "local.sh", work.pictures, work.results] + OPTIONS
    interrupted_and_resumed(context, work, words)
    before = work.made()
    expect(context.run(words) == 0, "a finished farm fails when it is started again")
    expect(work.made() == before, "a finished farm makes results again")
    damaged = sorted(work.expected)[0]
    pathlib.Path(damaged).write_bytes(work.expected[damaged][:-9])
    expect("damaged" in context.refusal(words), "a damaged result is passed over")
    expect(context.run(words + ["--force"]) == 0 and not work.check(), "--force does not mend a damaged result")


def bad_pictures(context):
    """A picture that cannot be read stops no other, and is named."""
    work = Work(context.bases, context.folder, 12)
    (work.pictures / "bad.gif").write_text("no picture")
    said = context.refusal([context.scripts / "local.sh", work.pictures, work.results] + OPTIONS)
    expect("bad.gif: the file is not a GIF" in said, "the bad picture is not named: " + said)
    expect(not work.check(), "not everything else was made: %s" % work.check())


def refusals(context):
    """What kestrel refuses for a folder is refused by each script before any work."""
    work = Work(context.bases, context.folder, 3)
    for script in (["local.sh"], ["ssh.sh", ":"], ["ssh-copy.sh", ":"], ["slurm.sh"]):
        words = [context.scripts / script[0]] + script[1:]
        folders = [work.pictures, work.results]
        expect('unknown effect "Embosss"; did you mean Emboss?' in context.refusal(words + folders + ["--effect", "Embosss"]),
               "%s does not refuse an unknown effect" % script[0])
        expect("needs a folder of pictures" in context.refusal(words + folders), "%s takes no options" % script[0])
        expect("is not a folder" in context.refusal(words + [context.folder / "none", work.results, "--dither"]),
               "%s takes a folder that is not there" % script[0])
    for name in ("same.bmp", "same.png"):
        shutil.copyfile(sorted(context.bases)[2] if name == "same.png" else make_bmp(context),
                        work.pictures / name)
    said = context.refusal([context.scripts / "local.sh", work.pictures, work.results] + OPTIONS)
    expect("both results would be" in said, "two results of one name are not refused: " + said)
    (work.pictures / "same.bmp").unlink()
    (work.pictures / "a\tb.gif").write_text("x")
    said = context.refusal([context.scripts / "local.sh", work.pictures, work.results] + OPTIONS)
    expect("a name has a tab" in said, "a name with a tab is not refused: " + said)
    expect(not work.made(), "something was made before the refusal")


def make_bmp(context):
    path = context.folder / "still.bmp"
    path.write_bytes(b"BM" + bytes([58, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 40, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 24, 0])
                     + bytes(24) + b"\x10\x20\x30\0")
    return path


def with_ssh(context, use):
    running, client = [], None
    try:
        client = services.start_ssh(running, context.folder / "ssh-server", HOSTS)
        use({"PARALLEL_SSH": " ".join(client)})
    finally:
        if client:
            services.stop_ssh(client, HOSTS)
        services.stop_all(running)


def thousand(context):
    """A thousand files on two machines that share the folders."""
    work = Work(context.bases, context.folder, 1000)
    words = [context.scripts / "ssh.sh", ",".join("2/" + host for host in HOSTS), work.pictures, work.results] + OPTIONS
    with_ssh(context, lambda variables: interrupted_and_resumed(context, work, words, after=300, **variables))


def copied(context):
    """Two machines that share no folder."""
    work = Work(context.bases, context.folder, 40)
    words = [context.scripts / "ssh-copy.sh", ",".join("1/" + host for host in HOSTS), work.pictures,
             work.results] + OPTIONS
    # What stands beside the results is rsync's, not kestrel's.
    with_ssh(context, lambda variables: interrupted_and_resumed(context, work, words, leftover=False, **variables))
    left = [path for path in (context.folder / "ssh-server" / "home").rglob("*.*") if path.is_file()]
    expect(len(left) <= 2 * len(HOSTS), "files stay on the other machines: %s" % left[:5])


def no_kestrel_there(context):
    """A machine without the program is named before any work."""
    work = Work(context.bases, context.folder, 2)

    def use(variables):
        work_words = [work.pictures, work.results] + OPTIONS
        for script in ("ssh.sh", "ssh-copy.sh"):
            said = context.refusal([context.scripts / script, "anna"] + work_words,
                                   KESTREL=str(link_to(context)), KFX_HIDE="1", **variables)
            expect("not every machine has a kestrel" in said, "%s says: %s" % (script, said))
            expect(not work.made(), "something was made")

    with_ssh(context, use)


def link_to(context):
    """A kestrel that only this machine finds: over ssh the variable is missing."""
    path = context.folder / "kestrel-here"
    path.write_text('#!/bin/bash\n[ "${KFX_HIDE:-}" ] || exit 127\nexec "%s" "$@"\n' % context.kestrel)
    path.chmod(0o755)
    return path


def slurm(context):
    """An array job whose tasks take several pictures each; one task is put back into the queue, then all are killed."""
    work = Work(context.bases, context.folder, 40)
    running, environment = [], None
    words = [context.scripts / "slurm.sh", work.pictures, work.results] + OPTIONS
    try:
        environment = services.start_slurm(running, context.folder / "slurm")

        def stop():
            services.stop_slurm(environment)

        interrupted_and_resumed(context, work, words, stop, SLURM_CONF=environment["SLURM_CONF"],
                                SBATCH_WAIT="1", TASKS=str(SLURM_TASKS))
    finally:
        if environment:
            services.stop_slurm(environment)
        services.stop_all(running)


def requeued(context):
    """A task that is put back into the queue in the middle begins again and makes nothing twice."""
    work = Work(context.bases, context.folder, 20)
    running, environment = [], None
    try:
        environment = services.start_slurm(running, context.folder / "slurm")
        watch = FolderWatch(work.results, lambda path: work.expected.get(path))
        try:
            farm = context.start([context.scripts / "slurm.sh", work.pictures, work.results] + OPTIONS,
                                 SLURM_CONF=environment["SLURM_CONF"], SBATCH_WAIT="1", TASKS="1")
            watch.wait_for(3)
            subprocess.run(["scontrol", "requeue", "1_0"], env=environment, check=True, stdin=subprocess.DEVNULL)
            there = len(watch.appeared)
            while farm.poll() is None and len(watch.appeared) <= there:
                # A job that was put back waits for two minutes, unless its time is said.
                subprocess.run(["scontrol", "update", "jobid=1_0", "starttime=now"], env=environment,
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                watch.pause()
            watch.wait_for(len(work.expected))
            expect(farm.wait() == 0, "the array job failed")
            twice = [path for path, times in watch.appeared.items() if times != 1]
            expect(not twice, "appeared more than once: %s" % twice[:3])
        except BaseException:
            watch.close()
            raise
        expect_all(work, watch)
    finally:
        if environment:
            services.stop_slurm(environment)
        services.stop_all(running)


def makefile(context):
    """Make, killed in the middle; names that it cannot take; other options."""
    work = Work(context.bases, context.folder, 40, odd_names=False)
    quoted = " ".join("'%s'" % word if " " in word else word for word in OPTIONS)
    words = ["make", "-f", context.scripts / "Makefile", "-j", "2", "-k", "IN=%s" % work.pictures,
             "OUT=%s" % work.results, "OPTIONS=" + quoted]
    # A result whose command is killed is removed by make, also when it was whole.
    interrupted_and_resumed(context, work, words, workers=False)
    before = work.made()
    expect(context.run(words) == 0 and work.made() == before, "make makes results again")
    expect(context.run(words[:-1] + ["OPTIONS=--effect Bump"]) == 0, "make fails with other options")
    expect(all(facts != before[path] for path, facts in work.made().items()), "make keeps results of other options")
    (work.pictures / "two words.gif").write_text("x")
    expect("make takes no names with" in context.refusal(words), "make takes a name with a space")


def split(context):
    """One animation in parts, killed in the middle and resumed: the bytes of a single command. Other options are
    refused."""
    sample, single, out = (context.folder / name for name in ("whole sample.gif", "single.gif", "joined.gif"))
    options = ["--effect", "Emboss", "--dither", "--supercompress"]
    subprocess.run([context.kestrel, "sample", sample], check=True, stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL)
    subprocess.run([context.kestrel, "apply", sample, "-o", single, "--quiet"] + options, check=True,
                   stdin=subprocess.DEVNULL)
    words = [context.scripts / "split.sh", ":", sample, out, "2"] + options
    parts = context.folder / "joined.gif.parts"
    parts.mkdir()
    watch = FolderWatch(parts, lambda path: None)
    try:
        farm = context.start(words)
        watch.wait_for(5)  # the survey, the list of the work, three parts
        processes.kill_all(str(parts), farm.pid)
        farm.wait()
    finally:
        watch.close()
    expect(not out.exists(), "the result is there before all parts are")
    there = {path: path.stat().st_mtime_ns for path in parts.glob("*.kpart")}
    expect(0 < len(there) < 12, "the farm was not in the middle: %d of 12 parts were there" % len(there))
    expect("is not what" in context.refusal(words[:5] + ["--effect", "Bump"]), "other options go on with these parts")
    expect(all(path.stat().st_mtime_ns == time for path, time in there.items()), "parts were made again")
    expect(context.run(words) == 0, "the animation is not joined")
    expect(out.read_bytes() == single.read_bytes(), "the joined file is not that of a single command")
    expect(not parts.exists(), "parts are left")


CASES = [local, bad_pictures, refusals, copied, no_kestrel_there, slurm, requeued, makefile, split, thousand]
