"""How far a body travels before it touches another, and the geometry below: arrays in, arrays out.

>>> import gsl_geometry as gg
>>> c = gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z")
>>> c.travel
30.0

Body holds triangles: Body(vertices, faces) from arrays, read(path) from a mesh file. sweep asks one question; Pair asks
many, such as pair.sweep(sphere(1000)). Contact and Contacts are answers. The other functions take and return arrays.

The examples read two meshes from the current folder. The Debian package has them, programs and python.md in
/usr/share/doc/python3-gsl-geometry/.
"""

from . import _body, _contact, _library, _pair
from ._body import *  # noqa: F403
from ._contact import *  # noqa: F403
from ._core import version as __version__
from ._library import *  # noqa: F403
from ._pair import *  # noqa: F403

__all__ = sorted(_body.__all__ + _contact.__all__ + _library.__all__ + _pair.__all__) + ["__version__"]

for _name in __all__[:-1]:
    globals()[_name].__module__ = __name__
del _name
