"""Uses the package in all of its types, for mypy --strict; it need not run. A line with type: ignore is an error that
mypy must see."""
import mmap
from pathlib import Path
from typing import List, Optional

import codetrans


def use(path: Path, data: bytearray, mapped: mmap.mmap) -> List[str]:
    found: codetrans.Detection = codetrans.detect(data)
    encoding: Optional[str] = codetrans.detect(mapped).encoding
    margin: int = found.margin - codetrans.ENOUGH_MARGIN
    sure: bool = found.bom or found.confident or margin > 0
    found.margin = margin  # type: ignore[misc]
    codetrans.detect('text')  # type: ignore[arg-type]
    codetrans.detect_file(path).encoding.upper()  # type: ignore[union-attr]
    try:
        text: str = codetrans.decode(memoryview(data), encoding if sure else None, errors='replace')
    except codetrans.UndetectedError as error:
        text = str(error)
    with codetrans.open(path, newline='') as file:
        return [text, *file]
