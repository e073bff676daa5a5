"""Which files of the tree the checks look at: what git knows or would add, so that build folders never count."""
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent


def listed():
    try:
        done = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT,
                              check=True, capture_output=True, text=True)
        return done.stdout.split("\0")
    except (OSError, subprocess.CalledProcessError):
        # Unpacked from an archive, or git does not trust the folder's owner.
        found = (path.relative_to(ROOT) for path in ROOT.rglob("*"))
        return [f"{path}" for path in found if path.parts[0] != "build" and not path.parts[0].startswith(".")]


def files(*suffixes):
    names = sorted(set(name for name in listed() if name.endswith(suffixes)))
    return [pathlib.PurePosixPath(name) for name in names if (ROOT / name).is_file()]
