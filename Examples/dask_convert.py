#!/usr/bin/env python3
"""Converts the files of a tree to UTF-8, in place, on the workers of a Dask cluster, and writes a table of them:

    dask_convert.py TREE TABLE.csv                               # two processes on this machine
    dask_convert.py --workers 8 TREE TABLE.csv
    dask_convert.py --scheduler tcp://host:8786 TREE TABLE.csv   # a cluster whose machines all see TREE under this name

The table has one row for each file: name, encoding, bytes (of the old file), lost (characters that could not be decoded)
and result: converted, kept (it is UTF-8 already), undecided, or refused (something would be lost). Only converted files are
changed. If a worker dies, Dask gives its tasks to another one. A file is replaced as a whole, and is not converted again.

Needs the package codetrans on all machines, and Debian's python3-distributed. The dashboard shows the tasks under the names
"inspect" and "convert"; it needs bokeh, which Debian 12 does not have (elsewhere: pip install bokeh)."""
import argparse
import contextlib
import csv
import hashlib
import os
import shutil
import sys
import tempfile
from collections import Counter
from pathlib import Path
from typing import NamedTuple, Optional

import codetrans
from distributed import Client, LocalCluster, as_completed

TEMPORARY = '.codetrans-new'
FILES_PER_TASK = 16


class Row(NamedTuple):
    name: str
    encoding: Optional[str]
    bytes: int
    lost: int
    result: str


class Plan(NamedTuple):
    """What is to be done with a file, and the digest of the content for which that is right."""

    row: Row
    digest: bytes


def digest_of(data):
    return hashlib.blake2b(data, digest_size=16).digest()


def is_utf8(data):
    with contextlib.suppress(UnicodeDecodeError):
        str(data, 'utf-8')
        return True


def plan_for(path):
    try:
        data = Path(path).read_bytes()
    except OSError as error:
        return Plan(Row(path, None, 0, 0, f'failed: {error.strerror}'), b'')
    if is_utf8(data):
        return Plan(Row(path, 'ascii' if data.isascii() else 'utf-8', len(data), 0, 'kept'), b'')
    found = codetrans.detect(data)
    if not found.confident:
        return Plan(Row(path, found.encoding, len(data), 0, 'undecided'), b'')
    try:
        codetrans.decode(data, found.encoding)
    except UnicodeDecodeError:
        lost = codetrans.decode(data, found.encoding, 'replace').count('\ufffd')
        return Plan(Row(path, found.encoding, len(data), lost, 'refused'), b'')
    return Plan(Row(path, found.encoding, len(data), 0, 'converted'), digest_of(data))


def replace(path, data):
    """The old content or the new one is there, whatever happens, also after a power failure."""
    folder, name = os.path.split(path)
    handle, temporary = tempfile.mkstemp(TEMPORARY, f'.{name}.', folder)
    try:
        with open(handle, 'wb') as file:
            file.write(data)
            file.flush()
            os.fsync(file.fileno())
        shutil.copymode(path, temporary)
        os.replace(temporary, path)
    except BaseException:
        os.unlink(temporary)
        raise
    handle = os.open(folder or '.', os.O_RDONLY)
    try:
        os.fsync(handle)
    finally:
        os.close(handle)


def carry_out(plan):
    """Converts the file, unless an earlier run of the task, whose worker died, has done it already."""
    path = plan.row.name
    try:
        data = Path(path).read_bytes()
        if digest_of(data) == plan.digest:
            replace(path, codetrans.decode(data, plan.row.encoding).encode())
        elif not is_utf8(data):
            return plan.row._replace(result='failed: changed by another program')
    except OSError as error:
        return plan.row._replace(result=f'failed: {error.strerror}')
    return plan.row


def inspect(paths):
    return [plan_for(path) for path in paths]


def convert(plans):
    return [carry_out(plan) for plan in plans]


def spread(client, task, items):
    """The results of a task for all items, with what failed in the place of those of a group that killed its workers."""
    groups = [items[at:at + FILES_PER_TASK] for at in range(0, len(items), FILES_PER_TASK)]
    futures = client.map(task, groups, pure=False)
    places = {future.key: at for at, future in enumerate(futures)}
    results = [None] * len(groups)
    for done, future in enumerate(as_completed(futures), 1):
        at = places[future.key]
        try:
            results[at] = future.result()  # waits once more if the result was lost with its worker
        except Exception as error:
            results[at] = [error] * len(groups[at])
        if sys.stderr.isatty() or done == len(groups):
            print(f'\r{task.__name__}: {done} of {len(groups)} tasks', end='', file=sys.stderr, flush=True)
    print(file=sys.stderr)
    return [result for group in results for result in group]


def clean_up(tree):
    """Removes what a worker that died has left; nobody else may be converting in the tree."""
    for path in Path(tree).rglob(f'.*{TEMPORARY}'):
        path.unlink()


def convert_tree(client, tree):
    """The rows of the table, one for each file, in the order of the names."""
    clean_up(tree)
    paths = sorted(str(path) for path in Path(tree).rglob('*') if path.is_file() and not path.is_symlink())
    # All plans are brought here first. A task that runs again thus still knows what the file was before.
    plans = spread(client, inspect, paths)
    plans = [plan if isinstance(plan, Plan) else Plan(Row(path, None, 0, 0, f'failed: {plan}'), b'')
             for path, plan in zip(paths, plans)]
    wanted = [plan for plan in plans if plan.row.result == 'converted']
    results = spread(client, convert, wanted)
    rows = {plan.row.name: row if isinstance(row, Row) else plan.row._replace(result=f'failed: {row}')
            for plan, row in zip(wanted, results)}
    clean_up(tree)
    return [rows.get(plan.row.name, plan.row) for plan in plans]


def write_table(rows, path):
    with open(path, 'w', newline='', encoding='utf-8', errors='surrogateescape') as file:
        writer = csv.writer(file)
        writer.writerow(Row._fields)
        writer.writerows(rows)


def start_cluster(workers):
    try:
        import bokeh  # noqa: F401: the dashboard needs it

        address = ':8787'
    except ImportError:
        address = None
    return LocalCluster(n_workers=workers, threads_per_worker=1, dashboard_address=address)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('--scheduler', metavar='ADDRESS', help='use the cluster of this scheduler')
    parser.add_argument('--workers', type=int, default=2, metavar='N', help='processes on this machine without it (2)')
    parser.add_argument('tree', metavar='TREE', help='the folder whose files are converted')
    parser.add_argument('table', metavar='TABLE.csv', help='the table, which is written at the end')
    options = parser.parse_args()
    if not os.path.isdir(options.tree):
        parser.error(f'not a folder: {options.tree}')
    with contextlib.ExitStack() as stack:
        cluster = options.scheduler or stack.enter_context(start_cluster(options.workers))
        client = stack.enter_context(Client(cluster))
        if options.scheduler:
            client.upload_file(__file__)
        rows = convert_tree(client, os.path.abspath(options.tree))
    write_table(rows, options.table)
    counts = Counter(row.result.split(':')[0] for row in rows)
    print(*(f'{count} {result}' for result, count in counts.items()), sep=', ')
    return 0 if counts['converted'] + counts['kept'] == len(rows) else 1


if __name__ == '__main__':
    import dask_convert  # workers, too, import what they run by this name

    sys.exit(dask_convert.main())
