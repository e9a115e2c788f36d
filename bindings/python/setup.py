"""Adds to pyproject.toml what is only known while building."""

import pathlib
import tempfile

from setuptools import Distribution, setup

arguments = {}
if any(pathlib.Path("zyn_system_info").glob("*ZynSystemInfo.*")):
    # With the library inside, the wheel is for one platform and for every version of Python.

    class BinaryDistribution(Distribution):
        def has_ext_modules(self):
            return True

    class PlatformWheel(Distribution().get_command_class("bdist_wheel")):
        def get_tag(self):
            return "py3", "none", self.plat_name

    arguments = {"distclass": BinaryDistribution, "cmdclass": {"bdist_wheel": PlatformWheel}}

# By default setuptools writes beside the sources, which may be read-only.
with tempfile.TemporaryDirectory() as folder:
    setup(options={"build": {"build_base": folder}, "egg_info": {"egg_base": folder}}, **arguments)
