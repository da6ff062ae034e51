"""Compiles the engine of the library and the extension into one module, and puts the model beside it.

The sources are those of the checkout; a source distribution carries copies of them in the folder "library"."""
import platform
import re
import shutil
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext
from setuptools.command.build_py import build_py
from setuptools.command.sdist import sdist

HERE = Path(__file__).resolve().parent
COPIES = HERE / 'library'
LIBRARY = COPIES if COPIES.is_dir() else HERE.parents[1]
ENGINE = ['Detection', 'FastPaths', 'Margin', 'Model*', 'Shortcuts']
X86 = ['X86/FastWalk', 'X86/ValueSums']
PARTS = ['DetectionType', 'Module', 'PairDecoder']
BESIDE_THE_MODULE = ['Data/CodeTrans.model', 'LICENSE']


def engine_sources(names):
    return sorted(path for name in names for path in (LIBRARY / 'Src/CodeTrans').glob(name + '.cpp'))


def version():
    header = (LIBRARY / 'Src/CodeTrans/CodeTrans.h').read_text(encoding='utf-8')
    return '.'.join(re.search(rf'#define CODETRANS_VERSION_{part} (\d+)', header)[1] for part in ('MAJOR', 'MINOR', 'PATCH'))


class BuildWithModel(build_py):
    def run(self):
        super().run()
        for name in BESIDE_THE_MODULE:
            self.copy_file(str(LIBRARY / name), str(Path(self.build_lib, 'codetrans', Path(name).name)))


# Only here, because setuptools wants no paths outside of the folder in its lists of files.
class BuildWithEngine(build_ext):
    def build_extension(self, ext):
        is_x86 = platform.machine() in ('x86_64', 'AMD64')
        ext.sources += [str(path) for path in engine_sources(ENGINE + X86 if is_x86 else ENGINE)]
        super().build_extension(ext)


class SourcesWithLibrary(sdist):
    def make_release_tree(self, base_dir, files):
        super().make_release_tree(base_dir, files)
        headers = sorted((LIBRARY / 'Src/CodeTrans').rglob('*.h'))
        for path in [*engine_sources(ENGINE + X86), *headers, *(LIBRARY / name for name in BESIDE_THE_MODULE)]:
            target = Path(base_dir, 'library', path.relative_to(LIBRARY))
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(path, target)


setup(
    version=version(),
    cmdclass={'build_ext': BuildWithEngine, 'build_py': BuildWithModel, 'sdist': SourcesWithLibrary},
    ext_modules=[
        Extension(
            'codetrans._engine',
            sources=[f'Extension/{name}.cpp' for name in PARTS],
            include_dirs=['Extension', str(LIBRARY / 'Src/CodeTrans')],
            extra_compile_args=['-std=c++20', '-O3', '-g0', '-fvisibility=hidden', '-fvisibility-inlines-hidden'],
            language='c++',
        )
    ],
)
