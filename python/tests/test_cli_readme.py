"""The command line's exit codes and refusals, and the README's Python and
command-line examples run as they stand."""

import contextlib
import io
import os
import re
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

import quorin
from quorin import cli, images

README = Path(__file__).resolve().parents[2] / "README.md"
rng = np.random.default_rng(5)


def blocks(marker):
    """(code, expected output) of each fenced block after marker."""
    text = README.read_text()
    found = []
    for match in re.finditer(rf"<!-- {marker} -->\n```\w+\n(.*?)```", text, re.S):
        rest = text[match.end():]
        printed = re.match(r"\s*It prints:\s*```text\n(.*?)```", rest, re.S)
        found.append((match[1], printed[1] if printed else None))
    return found


@pytest.mark.parametrize("code,expected", blocks("python-example"))
def test_readme_python_examples(code, expected):
    out = io.StringIO()
    with contextlib.redirect_stdout(out):
        exec(compile(code, "README.md", "exec"), {})
    assert out.getvalue() == expected


def make_png(path, shape=(24, 32, 4)):
    images.write_image(str(path), rng.integers(0, 256, shape, dtype=np.uint8))


def test_readme_command_line_examples(tmp_path):
    (code, _), = blocks("cli-example")
    for name in ("photo.png", "top.png", "bottom.png"):
        make_png(tmp_path / name)
    (tmp_path / "shots").mkdir()
    for name in ("a.png", "b.png", "c.png"):
        make_png(tmp_path / "shots" / name)
    env = dict(os.environ, PATH=f"{Path(sys.executable).parent}{os.pathsep}{os.environ['PATH']}")
    for line in code.strip().splitlines():
        done = subprocess.run(line, shell=True, cwd=tmp_path, env=env, capture_output=True, text=True)
        assert done.returncode == 0, f"{line}: {done.stderr}"
    for produced in ("premultiplied.png", "blended.tif", "swapped/a.png", "straight/c.png"):
        assert (tmp_path / produced).is_file()
    swapped = images.read_image(str(tmp_path / "swapped/b.png"))
    np.testing.assert_array_equal(swapped, images.read_image(str(tmp_path / "shots/b.png"))[..., [2, 1, 0, 3]])


def run(args, capsys):
    code = cli.main([str(a) for a in args])
    return code, capsys.readouterr().err


def test_exit_codes_and_nothing_written_on_failure(tmp_path, capsys):
    make_png(tmp_path / "in.png")
    (tmp_path / "junk.png").write_text("not an image")
    grey = tmp_path / "grey.png"
    images.write_image(str(grey), rng.integers(0, 256, (8, 9), dtype=np.uint8))
    out = tmp_path / "out.png"
    cases = [
        (["premultiply", tmp_path / "missing.png", "-o", out], cli.INPUT, "no such file"),
        (["premultiply", tmp_path / "junk.png", "-o", out], cli.INPUT, "cannot be read"),
        (["premultiply", tmp_path / "in.png", "-o", tmp_path / "out.bmp"], cli.FORMAT, "unsupported output format"),
        (["permute_channels", grey, "--order", "0,1,2,3", "-o", out], cli.FORMAT, "takes no format"),
        (["premultiply", tmp_path / "in.png", "-o", out, "--jobs", "0"], cli.USAGE, "--jobs"),
    ]
    for args, expected, message in cases:
        code, err = run(args, capsys)
        assert (code, message in err) == (expected, True), err
        assert not out.exists() and not list(tmp_path.glob(".*.part"))
    with pytest.raises(SystemExit) as raised:
        cli.main(["permute_channels", str(tmp_path / "in.png"), "-o", str(out)])  # --order missing
    assert raised.value.code == cli.USAGE


def test_library_errors_carry_their_name(tmp_path, capsys, monkeypatch):
    # Files the reader accepts never reach a refusal: the call made here is
    # one the library refuses (a clip of an empty plane).
    make_png(tmp_path / "in.png")
    monkeypatch.setattr(images, "apply", lambda *a: quorin.clip(np.zeros((0, 3), np.float32), low=0, high=1))
    code, err = run(["premultiply", tmp_path / "in.png", "-o", tmp_path / "o.png"], capsys)
    assert code == cli.LIBRARY and "kQuorinError_BadArgument (-21773)" in err
    assert not (tmp_path / "o.png").exists()


def test_batch_with_jobs_reports_every_file(tmp_path, capsys):
    for name in ("a.png", "b.png"):
        make_png(tmp_path / name)
    (tmp_path / "c.png").write_text("broken")
    code, err = run(["premultiply", tmp_path / "a.png", tmp_path / "b.png", tmp_path / "c.png", "-o",
                     tmp_path / "out", "--jobs", "2"], capsys)
    assert code == cli.INPUT and "1 of 3 files failed" in err
    assert sorted(p.name for p in (tmp_path / "out").iterdir()) == ["a.png", "b.png"]
    for name in ("a.png", "b.png"):
        local = images.apply(cli.ops.available()["premultiply"], [images.read_image(str(tmp_path / name))], {})
        np.testing.assert_array_equal(images.read_image(str(tmp_path / "out" / name)), local)


def test_help_on_every_command(capsys):
    parser = cli.build_parser()
    commands = parser._subparsers._group_actions[0].choices
    for name in commands:
        with pytest.raises(SystemExit) as raised:
            cli.main([name, "--help"])
        assert raised.value.code == 0 and "usage: quorin" in capsys.readouterr().out
