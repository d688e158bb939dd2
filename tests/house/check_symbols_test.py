"""scripts/check_symbols.py accepts what the library may export and need, and nothing else."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_symbols


class Exports(unittest.TestCase):
    def test_names_of_the_library(self):
        for name in ("gsl_RealEqual(double, double, double)", "vtable for gsl_Plane",
                     "typeinfo name for gsl_Plane", "gsl_Plane::~gsl_Plane()",
                     "omi_Singleton<gsl_Util>::instance", "omu_PrimEnum<gsl_DotMethod>::Get() const",
                     "omu_ReturnPrim(gsl_ModelSegment const&)"):
            self.assertTrue(check_symbols.is_allowed_export("T", name), name)

    def test_other_names_are_refused(self):
        for name in ("Helper(double)", "cow_String::cow_String()", "omi_Singleton<int>::instance",
                     "mem_Malloc(unsigned long)", "Other::gsl_Hidden()", "vtable for Helper"):
            self.assertFalse(check_symbols.is_allowed_export("T", name), name)

    def test_templates_of_the_standard_library_only_weak(self):
        name = "void std::vector<int, std::allocator<int> >::_M_realloc_insert<int>(int&&)"
        self.assertTrue(check_symbols.is_allowed_export("W", name))
        self.assertFalse(check_symbols.is_allowed_export("T", name))

    def test_type_information_of_the_host_only_weak(self):
        name = "typeinfo name for cls_MetadataRegistrar"
        self.assertTrue(check_symbols.is_allowed_export("V", name))
        self.assertFalse(check_symbols.is_allowed_export("D", name))
        self.assertFalse(check_symbols.is_allowed_export("V", "vtable for cls_MetadataRegistrar"))


class Needs(unittest.TestCase):
    DECLARED = {"cow_String", "aio_FormattedDouble", "cls_Uid", "AllocateUid"}

    def undeclared(self, name):
        return check_symbols.undeclared_words(name, self.DECLARED)

    def test_declared_names_pass(self):
        for name in ("cow_String::cow_String(char const*)", "cls_Uid::AllocateUid()",
                     "operator<<(std::ostream&, aio_FormattedDouble const&)"):
            self.assertEqual(self.undeclared(name), [], name)

    def test_undeclared_names_are_reported(self):
        self.assertEqual(self.undeclared("cls_Uid::Secret()"), ["Secret"])
        self.assertEqual(self.undeclared("mem_Pool(unsigned long)"), ["mem_Pool"])

    def test_memory_comes_from_the_host(self):
        for name in ("malloc@GLIBC_2.2.5", "free@GLIBC_2.2.5", "strdup@GLIBC_2.2.5", "posix_memalign@GLIBC_2.2.5",
                     "operator new[](unsigned long, std::align_val_t, std::nothrow_t const&)@CXXABI_1.3.11",
                     "operator delete(void*, std::align_val_t)@CXXABI_1.3.11"):
            self.assertTrue(check_symbols.AROUND_THE_HOST.match(name), name)
        for name in ("mem_Malloc(unsigned long)", "mem_Free(void*)", "operator new(unsigned long)@GLIBCXX_3.4",
                     "operator delete(void*, unsigned long)@CXXABI_1.3.9", "strlen@GLIBC_2.2.5",
                     "__cxa_allocate_exception@CXXABI_1.3"):
            self.assertFalse(check_symbols.AROUND_THE_HOST.match(name), name)

    def test_names_of_these_libraries_lose_their_version(self):
        for name, stripped in (("cow_String::cow_String()@GSL_0.2", "cow_String::cow_String()"),
                               ("vtable for gsl_Plane@@GSL_12.34", "vtable for gsl_Plane"), ("GSL_0.2", ""),
                               ("malloc@GLIBC_2.2.5", "malloc@GLIBC_2.2.5")):
            self.assertEqual(check_symbols.OWN_VERSION.sub("", name), stripped)


if __name__ == "__main__":
    unittest.main()
