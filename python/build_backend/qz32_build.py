"""Builds the qz32 wheel (and source archive) with the standard library alone.

pip runs this in-tree backend (pyproject.toml's `backend-path`), so installing
the binding needs nothing from a package index: the wheel is pure Python, and
the package's files plus the metadata of pyproject.toml's [project] table are
all it holds.
"""

from __future__ import annotations

import base64
import hashlib
import io
import re
import tarfile
import zipfile
from pathlib import Path
from typing import Any

_ROOT = Path(__file__).resolve().parent.parent
_PACKAGE = "qz32"
_TAG = "py3-none-any"
_EPOCH = (1980, 1, 1, 0, 0, 0)  # zip's earliest time: the same sources give the same wheel


def _project() -> dict[str, Any]:
    text = (_ROOT / "pyproject.toml").read_text(encoding="utf-8")
    try:
        import tomllib
    except ImportError:  # before Python 3.11: the flat strings and string lists of [project]
        table = re.search(r"^\[project\]\n(.*?)(?=^\[|\Z)", text, re.M | re.S)
        body = table.group(1) if table else ""
        project: dict[str, Any] = {}
        for key, value in re.findall(r"^([\w-]+)\s*=\s*(.+)$", body, re.M):
            strings = re.findall(r'"([^"]*)"', value)
            project[key] = strings if value.startswith("[") else strings[0]
        return project
    return dict(tomllib.loads(text)["project"])


def _metadata(project: dict[str, Any]) -> str:
    lines = [
        "Metadata-Version: 2.1",
        f"Name: {project['name']}",
        f"Version: {project['version']}",
        f"Summary: {project['description']}",
        f"Requires-Python: {project['requires-python']}",
    ]
    lines += [f"Classifier: {classifier}" for classifier in project.get("classifiers", [])]
    readme = (_ROOT / project["readme"]).read_text(encoding="utf-8")
    lines += ["Description-Content-Type: text/markdown", "", readme]
    return "\n".join(lines)


def _package_files() -> list[Path]:
    """The package's modules, its type marker and any library put beside them."""
    folder = _ROOT / _PACKAGE
    return sorted(path for path in folder.iterdir() if path.is_file() and path.suffix not in (".pyc", ".pyo"))


def _dist_info(project: dict[str, Any]) -> str:
    return f"{project['name']}-{project['version']}.dist-info"


def _add(archive: zipfile.ZipFile, record: list[str], name: str, data: bytes) -> None:
    entry = zipfile.ZipInfo(name, _EPOCH)
    entry.external_attr = 0o644 << 16
    entry.compress_type = zipfile.ZIP_DEFLATED
    archive.writestr(entry, data)
    digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
    record.append(f"{name},sha256={digest},{len(data)}")


def _write_wheel(wheel_directory: str, contents: dict[str, bytes]) -> str:
    project = _project()
    dist_info = _dist_info(project)
    name = f"{project['name']}-{project['version']}-{_TAG}.whl"
    record: list[str] = []
    with zipfile.ZipFile(Path(wheel_directory) / name, "w") as archive:
        for path, data in contents.items():
            _add(archive, record, path, data)
        _add(archive, record, f"{dist_info}/METADATA", _metadata(project).encode())
        wheel = f"Wheel-Version: 1.0\nGenerator: qz32_build\nRoot-Is-Purelib: true\nTag: {_TAG}\n"
        _add(archive, record, f"{dist_info}/WHEEL", wheel.encode())
        record.append(f"{dist_info}/RECORD,,")
        archive.writestr(zipfile.ZipInfo(f"{dist_info}/RECORD", _EPOCH), "\n".join(record) + "\n")
    return name


def get_requires_for_build_wheel(config_settings: dict[str, Any] | None = None) -> list[str]:
    return []


def get_requires_for_build_sdist(config_settings: dict[str, Any] | None = None) -> list[str]:
    return []


def get_requires_for_build_editable(config_settings: dict[str, Any] | None = None) -> list[str]:
    return []


def build_wheel(wheel_directory: str, config_settings: dict[str, Any] | None = None,
                metadata_directory: str | None = None) -> str:
    files = {f"{_PACKAGE}/{path.name}": path.read_bytes() for path in _package_files()}
    return _write_wheel(wheel_directory, files)


def build_editable(wheel_directory: str, config_settings: dict[str, Any] | None = None,
                   metadata_directory: str | None = None) -> str:
    """A wheel whose path file puts the source folder on the import path."""
    return _write_wheel(wheel_directory, {f"{_PACKAGE}.pth": f"{_ROOT}\n".encode()})


def build_sdist(sdist_directory: str, config_settings: dict[str, Any] | None = None) -> str:
    project = _project()
    base = f"{project['name']}-{project['version']}"
    sources = [_ROOT / "pyproject.toml", _ROOT / project["readme"], Path(__file__)] + _package_files()

    def add(archive: tarfile.TarFile, name: str, data: bytes) -> None:
        entry = tarfile.TarInfo(f"{base}/{name}")
        entry.size = len(data)
        entry.mode = 0o644
        archive.addfile(entry, io.BytesIO(data))

    with tarfile.open(Path(sdist_directory) / f"{base}.tar.gz", "w:gz", format=tarfile.PAX_FORMAT) as archive:
        for path in sources:
            add(archive, path.relative_to(_ROOT).as_posix(), path.read_bytes())
        add(archive, "PKG-INFO", _metadata(project).encode())
    return f"{base}.tar.gz"
