# Spack, its repository made known by `spack repo add packaging/spack`, from zandor-VERSION.tar.gz, which RELEASING.md
# makes, in the folder where that lies: spack install --no-checksum zandor
# or from a checkout: spack dev-build --source-path FOLDER zandor@VERSION
import os

from spack.package import *

try:  # Spack 1.0 and newer; in older ones the line above brings it
    from spack_repo.builtin.build_systems.cmake import CMakePackage
except ImportError:
    pass


class Zandor(CMakePackage):
    """Vibrational analysis of excited states from finite differences of gradients, with Herzberg-Teller terms."""

    manual_download = True
    url = f"file://{os.getcwd()}/zandor-1.0.0.tar.gz"
    version("1.0.0")

    variant("static", default=False, description="Link statically: many small runs start faster")
    variant("python", default=True, description="Install what zandor.py needs, too")

    depends_on("cxx", type="build")
    depends_on("cmake@3.25:", type="build")
    depends_on("cli11", type="build")
    depends_on("eigen", type="build")
    depends_on("nlohmann-json", type="build")
    depends_on("py-numpy", type="run", when="+python")
    conflicts("%gcc@:11", msg="C++20 as of GCC 12 is needed")
    conflicts("%clang@:14", msg="C++20 as of Clang 15 is needed")

    sanity_check_is_file = [
        "bin/zandor_gather", "bin/zandor_displace", "bin/zandor_collect", "bin/zandor_check", "bin/zandor_ht",
        "bin/zandor_export", "bin/zandor_probe", "lib/python3/dist-packages/zandor.py",
    ]
    sanity_check_is_dir = ["share/doc/zandor/examples", "share/man/man1"]

    def cmake_args(self):
        return [
            self.define_from_variant("ZANDOR_STATIC", "static"),
            self.define("ZANDOR_PYTHON_DIR", "lib/python3/dist-packages"),
        ]

    def setup_run_environment(self, env):
        env.prepend_path("PYTHONPATH", join_path(self.prefix, "lib/python3/dist-packages"))
