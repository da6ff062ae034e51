"""Examples/dask_convert.py on three workers, one of which is killed while it converts."""
import csv
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

ROOT = Path(os.environ['CODETRANS_SOURCES'])
sys.path.insert(0, str(ROOT / 'Examples'))
os.environ['PYTHONPATH'] = os.pathsep.join([str(ROOT / 'Examples'), os.environ.get('PYTHONPATH', '')])
import dask_convert  # noqa: E402: behind the path to it
from distributed import Client  # noqa: E402

SAMPLES = ROOT / 'Test/Samples'
FILES = 600


class KilledWorker(unittest.TestCase):
    def setUp(self):
        self.tree = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.tree)
        encoded = [path for path in SAMPLES.iterdir() if '-han' in path.name and path.suffix != '.utf8']
        self.right, self.names = {}, [f'{at % 7}/文件 {at}.txt' for at in range(FILES)]
        for at, name in enumerate(self.names):
            source = encoded[at % len(encoded)]
            self.right[name] = source.with_suffix('.utf8').read_bytes() * 200
            self.write(name, source.read_bytes() * 200)
        for name, data in (('kept', '中文'.encode()), ('korean', (SAMPLES / 'korean.euc-kr').read_bytes())):
            self.write(name, data)
            self.right[name] = data
        broken = (SAMPLES / 'news-hans.gbk').read_bytes() + b'\xff'
        self.write('broken', broken)
        self.right['broken'] = broken

    def write(self, name, data):
        (self.tree / name).parent.mkdir(exist_ok=True)
        (self.tree / name).write_bytes(data)

    def contents(self):
        return {str(path.relative_to(self.tree)): path.read_bytes() for path in self.tree.rglob('*') if path.is_file()}

    def states(self):
        states = {path: path.stat() for path in self.tree.rglob('*')}
        return {path: (state.st_ino, state.st_mtime_ns, state.st_size) for path, state in states.items()}

    def kill_one_worker(self, pids):
        """Once some files are done."""
        started = {name: os.stat(self.tree / name).st_ino for name in self.names}
        while sum(os.stat(self.tree / name).st_ino != old for name, old in started.items()) < FILES // 10:
            time.sleep(0.01)
        os.kill(pids[0], signal.SIGKILL)
        self.done_when_killed = sum(os.stat(self.tree / name).st_ino != old for name, old in started.items())

    def test_each_file_has_one_row_and_is_converted_once(self):
        with dask_convert.start_cluster(3) as cluster, Client(cluster) as client:
            pids = list(client.run(os.getpid).values())
            killer = threading.Thread(target=self.kill_one_worker, args=(pids,))
            killer.start()
            rows = dask_convert.convert_tree(client, str(self.tree))
            killer.join()
            self.assertLess(self.done_when_killed, FILES - 50)
            self.assertEqual(self.contents(), self.right)
            self.assertEqual([row.name for row in rows], sorted(str(self.tree / name) for name in self.right))
            results = {os.path.relpath(row.name, self.tree): row for row in rows}
            self.assertEqual({results[name].result for name in self.names}, {'converted'})
            self.assertEqual({results[name].encoding for name in self.names}, {'gb18030', 'big5hkscs', 'utf-16-le'})
            others = {name: results[name][3:] for name in ('kept', 'korean', 'broken')}
            self.assertEqual(others, {'kept': (0, 'kept'), 'korean': (0, 'undecided'), 'broken': (1, 'refused')})

        # The program, in a second run.
        before, table = self.states(), self.tree.with_suffix('.csv')
        self.addCleanup(table.unlink)
        run = subprocess.run([sys.executable, ROOT / 'Examples/dask_convert.py', self.tree, table], stdout=subprocess.PIPE)
        self.assertEqual((run.returncode, sorted(run.stdout.split())[-3:]), (1, [b'kept,', b'refused,', b'undecided']))
        with table.open(newline='') as file:
            again = list(csv.DictReader(file))
        self.assertEqual([row['name'] for row in again], [row.name for row in rows])
        self.assertEqual([row['result'] for row in again], [row.result.replace('converted', 'kept') for row in rows])
        self.assertEqual(self.states(), before)
        wrong = [sys.executable, ROOT / 'Examples/dask_convert.py', self.tree / 'none', table]
        self.assertEqual(subprocess.run(wrong, stderr=subprocess.DEVNULL).returncode, 2)

    def test_task_that_runs_again_finds_its_work_done(self):
        plans = dask_convert.inspect([str(self.tree / name) for name in self.names[:20]])
        rows = dask_convert.convert(plans)
        before = self.states()
        self.assertEqual(dask_convert.convert(plans), rows)
        self.assertEqual(self.states(), before)
        self.write(self.names[0], b'\xff')
        self.assertEqual(dask_convert.convert(plans[:1])[0].result, 'failed: changed by another program')


if __name__ == '__main__':
    unittest.main()
