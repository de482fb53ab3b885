# Builds and installs the package kels; kels_build.py tells where the library is looked for.
from setuptools import setup

setup(cffi_modules=['kels_build.py:ffi'])
