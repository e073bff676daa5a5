"""Which files of the tree the checks look at: what git knows or would add, so that build folders never count."""
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent


def files(*suffixes):
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT,
                            check=True, capture_output=True, text=True).stdout
    names = sorted(set(name for name in listed.split("\0") if name.endswith(suffixes)))
    return [pathlib.PurePosixPath(name) for name in names if (ROOT / name).is_file()]
