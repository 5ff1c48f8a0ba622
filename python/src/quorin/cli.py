"""The ``quorin`` command: one operation over PNG, TIFF and JPEG files.

    quorin OPERATION [options] INPUT... -o OUTPUT
    quorin info | quorin list
"""

from __future__ import annotations

import argparse
import inspect
import sys
from concurrent.futures import ThreadPoolExecutor, as_completed
from pathlib import Path
from typing import Any, Dict, List, Optional, Sequence, Tuple

from . import features, families, ops
from ._binding import SINGLE_THREADED
from ._lowlevel import NATIVE_DIR, VERSION
from .errors import FormatError, QuorinError, UsageError
from .images import InputError, WRITERS, check_output, process_files

# Exit codes, also listed by --help.
OK, FAILED, USAGE, INPUT, FORMAT, LIBRARY = 0, 1, 2, 3, 4, 5
EXIT_CODES = (f"exit codes: {OK} done; {USAGE} bad command line or parameter; {INPUT} an input file missing or "
              f"unreadable; {FORMAT} unsupported file or pixel format; {LIBRARY} the library refused the call "
              f"(its error name is printed); {FAILED} anything else")


def exit_code(error: BaseException) -> int:
    if isinstance(error, QuorinError):
        return LIBRARY
    if isinstance(error, FormatError):
        return FORMAT
    if isinstance(error, UsageError):
        return USAGE
    if isinstance(error, (InputError, FileNotFoundError)):
        return INPUT
    return FAILED


def _cli_operations() -> Dict[str, ops.Operation]:
    return {name: op for name, op in ops.available().items() if op.cli}


def _option(name: str) -> str:
    return "--" + name.replace("_", "-")


def build_parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="quorin", description="Runs Quorin operations over PNG, TIFF and JPEG files.",
        epilog="Run 'quorin list' for the operations and their parameters. " + EXIT_CODES)
    parser.add_argument("--version", action="version", version=f"quorin {VERSION}")
    commands = parser.add_subparsers(dest="command", metavar="COMMAND")
    commands.add_parser("info", help="version, vector targets, processors and implemented families",
                        description="Prints the version, the vector targets this processor runs, the processors "
                                    "and the implemented entry points per family.")
    commands.add_parser("list", help="operations with their parameters",
                        description="Prints every operation this build offers with its parameters and formats.")
    for name, op in _cli_operations().items():
        sub = commands.add_parser(name, help=op.doc.split(".")[0], description=op.doc, epilog=EXIT_CODES)
        if len(op.required_sources) == 1:
            sub.add_argument("inputs", nargs="+", metavar="INPUT",
                             help="image files; with several, OUTPUT is a folder")
        else:
            for i, source in enumerate(op.required_sources):
                sub.add_argument(f"source{i}", metavar=source.upper(), help=f"the {source} image file")
        sub.add_argument("-o", "--output", required=True, metavar="OUTPUT",
                         help=f"output file ({', '.join(sorted(WRITERS))}) or, for several inputs, a folder")
        for p in op.params:
            if p.kind is bool:
                sub.add_argument(_option(p.name), action="store_true", help=p.help)
            else:
                sub.add_argument(_option(p.name), type=p.kind, required=p.default is inspect.Parameter.empty,
                                 default=None, help=p.help)
        sub.add_argument("-j", "--jobs", type=int, default=1, metavar="N",
                         help="files processed at once (each call then single-threaded)")
        sub.add_argument("--progress", action=argparse.BooleanOptionalAction, default=None,
                         help="progress bar (default: for several files on a terminal)")
        sub.add_argument("--scheduler", metavar="ADDRESS", help="run the batch on this dask.distributed scheduler")
        sub.add_argument("--dask", action="store_true",
                         help="run the batch on a local dask.distributed cluster of --jobs worker processes")
    return parser


def _info() -> None:
    f = features()
    print(f"quorin {VERSION}")
    print(f"library: {NATIVE_DIR / 'libquorin.so'}")
    print(f"vector kernels: {'yes: ' + ', '.join(f['targets']) if f['vector'] else 'no (scalar kernels)'}")
    print(f"processors: {f['processors']}")
    print("implemented entry points by family:")
    for family, count in families().items():
        print(f"  {family}: {count}")


def _list() -> None:
    for name, op in ops.available().items():
        print(f"{name} {' '.join(s.upper() for s in op.required_sources) or '(no input)'}"
              f"{'' if op.cli else '   [Python only]'}")
        print(f"    {op.doc}")
        for p in op.params:
            print(f"    {_option(p.name)}: {p.help}")
        print(f"    formats: {', '.join(op.members())}")


def _jobs(op_name: str, inputs: List[str], output: str, sources: int) -> List[Tuple[List[str], str]]:
    """(inputs, output file) for each call of a command line."""
    if sources > 1 or len(inputs) == 1 and not Path(output).is_dir():
        return [(inputs, output)]
    folder = Path(output)
    if folder.exists() and not folder.is_dir():
        raise UsageError(f"{output}: with several inputs, OUTPUT must be a folder")
    folder.mkdir(parents=True, exist_ok=True)
    names = [str(folder / Path(i).name) for i in inputs]
    if len(set(names)) != len(names):
        raise UsageError("two inputs have the same file name: their outputs would collide")
    return [([i], n) for i, n in zip(inputs, names)]


def run_batch(op_name: str, jobs: Sequence[Tuple[List[str], str]], params: Dict[str, Any], workers: int = 1,
              progress: bool = False, client: Any = None) -> List[Tuple[str, Optional[BaseException]]]:
    """Runs every job, on threads or on a Dask client; (output, error or None)
    for each, whatever fails."""
    from tqdm import tqdm

    flags = SINGLE_THREADED if workers > 1 or client is not None else 0
    results: List[Tuple[str, Optional[BaseException]]] = []
    bar = tqdm(total=len(jobs), disable=not progress, unit="file", file=sys.stderr)
    if client is not None:
        from distributed import as_completed as dask_completed
        futures = {client.submit(process_files, op_name, i, o, params, flags, pure=False, retries=3): o
                   for i, o in jobs}
        for future in dask_completed(futures):
            results.append((futures[future], future.exception()))
            bar.update()
    else:
        with ThreadPoolExecutor(max(1, workers)) as pool:
            futures = {pool.submit(process_files, op_name, i, o, params, flags): o for i, o in jobs}
            for future in as_completed(futures):
                results.append((futures[future], future.exception()))
                bar.update()
    bar.close()
    return results


def _client(args: argparse.Namespace):
    from distributed import Client, LocalCluster
    if args.scheduler:
        return Client(args.scheduler), None
    cluster = LocalCluster(n_workers=max(1, args.jobs), threads_per_worker=1, processes=True,
                           dashboard_address=None)
    return Client(cluster), cluster


def main(argv: Optional[Sequence[str]] = None) -> int:
    parser = build_parser()
    args = parser.parse_args(argv)
    if args.command is None:
        parser.print_help()
        return USAGE
    if args.command == "info":
        _info()
        return OK
    if args.command == "list":
        _list()
        return OK
    op = _cli_operations()[args.command]
    params = {p.name: getattr(args, p.name) for p in op.params if getattr(args, p.name) is not None}
    sources = len(op.required_sources)
    inputs = args.inputs if sources == 1 else [getattr(args, f"source{i}") for i in range(sources)]
    try:
        if args.jobs < 1:
            raise UsageError("--jobs must be at least 1")
        jobs = _jobs(op.name, inputs, args.output, sources)
        for _, output in jobs:
            check_output(output)
    except Exception as error:
        print(f"quorin {op.name}: {error}", file=sys.stderr)
        return exit_code(error)
    progress = args.progress if args.progress is not None else (len(jobs) > 1 and sys.stderr.isatty())
    client = cluster = None
    if args.scheduler or args.dask:
        client, cluster = _client(args)
    try:
        results = run_batch(op.name, jobs, params, args.jobs, progress, client)
    finally:
        if client is not None:
            client.close()
        if cluster is not None:
            cluster.close()
    failures = [(o, e) for o, e in results if e is not None]
    for output, error in failures:
        where = "" if output in str(error) or any(i in str(error) for i in inputs) else f"{output}: "
        print(f"quorin {op.name}: {where}{error}", file=sys.stderr)
    if failures and len(jobs) > 1:
        print(f"quorin {op.name}: {len(failures)} of {len(jobs)} files failed", file=sys.stderr)
    return exit_code(failures[0][1]) if failures else OK


if __name__ == "__main__":
    sys.exit(main())
