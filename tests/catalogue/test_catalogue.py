"""The catalogue of exported names, checked against the library's published
interface rather than against the table's own rows: per-family counts, the name
grammar and its irregular corners, and exact argument lists of sample functions.

Run: python3 -m unittest discover -s tests/catalogue -v
"""
import importlib
import os
import re
import sys
import unittest
from collections import Counter

_CATALOGUE_DIR = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "catalogue")
sys.path.insert(0, os.path.normpath(_CATALOGUE_DIR))
generate = importlib.import_module("generate")

ALL_FUNCS = generate.catalogue()
BY_NAME = {f.name: f for f in ALL_FUNCS}

# Every exported operation, by family and operand codes, with the number of
# names the group has (both types, all its sizes and layouts).
EXPECTED_COUNTS = {
    ("Add", "vv vc vav vac vava"): 240,
    ("Add", "mm mmT mTm mTmT mam mamT maTm maTmT mama mamaT maTma maTmaT"): 600,
    ("Sub", "vv vc cv vav vac vva cva vava"): 390,
    ("Sub", "mm mmT mTm mTmT mam mamT maTm maTmT mama mamaT maTma maTmaT "
            "mma mmaT mTma mTmaT"): 840,
    ("Saxpy", "vv vav vva vava"): 210,
    ("LComb", "vv vav vava"): 150,
    ("DotProduct", "vv vav vava"): 150,
    ("CrossProduct", "vv vav vva vava"): 42,
    ("L2Norm", "v va"): 90,
    ("Mul", "vc vac"): 90,
    ("Mul", "mc mTc mac maTc"): 180,
    ("Mul", "mv mTv mva mTva mav maTv mava maTva"): 420,
    ("Mul", "mm mmT mTm mTmT mma mmaT mTma mTmaT mam mamT maTm maTmT "
            "mama mamaT maTma maTmaT"): 840,
    ("Gaxpy", "v va"): 90,
    ("Trace", "m ma"): 90,
    ("FrobNorm", "m ma"): 90,
    ("Transpose", "m ma"): 90,
    ("Copy", "va ma"): 36,
    ("Extract", "v m mT va ma maT"): 30,
    ("LoadIdentity", "ma"): 6,
    ("LUDecomp", "m ma"): 90,
    ("LUBackSubst", "mv mva mava"): 150,
    ("Det", "m ma"): 90,
    ("Invert", "m ma"): 90,
    ("CholeskyDecomp", "m ma"): 90,
    ("CholeskyBackSubst", "mv mva mava"): 150,
    ("QRDecomp", "m ma"): 90,
    ("QRBackSubst", "mv mva mava"): 150,
}
OPERATIONS = 5574
KERNELS = 24
EXPORTED = 5599

OP_RE = re.compile(r"^vorx(?P<family>[A-Z][A-Za-z0-9]*)_(?P<code>[a-zT]+)_(?P<type>32f|64f)"
                   r"(?:_(?P<size>[3-6]x[1-6]))?(?:_(?P<layout>[A-Z0-9]+))?$")
KERNEL_RE = re.compile(r"^a6_Det_(?P<code>m|ma)_(?P<type>32f|64f)_(?P<size>[3-6]x[3-6])(?:_(?P<layout>L))?$")

SIX = {"", "S2", "P", "PS2", "L", "LS2"}
THREE = {"", "S2", "P"}
VECTOR_SIZES = {None, "3x1", "4x1", "5x1", "6x1"}
MATRIX_SIZES = {None, "3x3", "4x4", "5x5", "6x6"}
# Families whose operands are vectors (their fixed sizes are lengths), and the
# layout converters that exist for run-time sizes only.
VECTOR_FAMILIES = {"Saxpy", "LComb", "DotProduct", "CrossProduct", "L2Norm"}
CONVERTERS = {"Copy", "Extract", "LoadIdentity"}
SIZE_NAMES = {"len", "width", "height", "size", "widthHeight",
              "src1Width", "src1Height", "src2Width", "src2Height", "src2Len"}


def parse(name):
    m = OP_RE.match(name)
    return m.groupdict() if m else None


def params(name):
    return [p.name for p in BY_NAME[name].params]


def is_array_code(code):
    return "a" in code


class CountsTest(unittest.TestCase):
    def setUp(self):
        self.ops = [f.name for f in ALL_FUNCS if f.name.startswith("vorx")]
        self.kernels = [f.name for f in ALL_FUNCS if not f.name.startswith("vorx")]

    def test_every_operation_falls_in_exactly_one_group_with_its_count(self):
        got = Counter()
        for name in self.ops:
            d = parse(name)
            self.assertIsNotNone(d, name)
            rows = [key for key in EXPECTED_COUNTS
                    if key[0] == d["family"] and d["code"] in key[1].split()]
            self.assertEqual(len(rows), 1, name)
            got[rows[0]] += 1
        for key, n in EXPECTED_COUNTS.items():
            self.assertEqual(got[key], n, key)
        self.assertEqual(sum(EXPECTED_COUNTS.values()), OPERATIONS)
        self.assertEqual(len(self.ops), OPERATIONS)

    def test_kernels_and_export_list(self):
        self.assertEqual(len(self.kernels), KERNELS)
        everything = generate.exported_names(built_only=False)
        self.assertEqual(len(everything), EXPORTED)
        self.assertIn("vorxGetLibVersion", everything)

    def test_names_are_unique(self):
        names = [f.name for f in ALL_FUNCS]
        dup = [n for n, c in Counter(names).items() if c > 1]
        self.assertEqual(dup, [])
        self.assertNotIn("vorxGetLibVersion", names)

    def test_built_rows_are_a_subset_of_the_whole(self):
        built = set(generate.exported_names())
        self.assertTrue(built <= set(generate.exported_names(built_only=False)))


class GrammarTest(unittest.TestCase):
    def test_sizes_and_layouts_of_the_regular_families(self):
        for f in ALL_FUNCS:
            d = parse(f.name)
            if d is None or d["family"] in CONVERTERS:
                continue
            with self.subTest(name=f.name):
                layout = d["layout"] or ""
                self.assertIn(layout, SIX if is_array_code(d["code"]) else THREE)
                if d["family"] == "CrossProduct":
                    self.assertEqual(d["size"], "3x1")
                elif d["family"] in VECTOR_FAMILIES or (
                        d["family"] in ("Add", "Sub", "Mul") and d["code"][0] in "vc"):
                    self.assertIn(d["size"], VECTOR_SIZES)
                else:
                    self.assertIn(d["size"], MATRIX_SIZES)

    def test_nothing_transposed_outside_add_sub_mul_extract(self):
        for f in ALL_FUNCS:
            if "T" in f.code:
                self.assertIn(f.family, ("Add", "Sub", "Mul", "Extract"), f.name)

    def test_names_that_exist_and_names_that_do_not(self):
        present = ["vorxCrossProduct_vv_32f_3x1", "vorxCrossProduct_vava_64f_3x1_LS2",
                   "vorxCopy_va_32f_SS", "vorxCopy_ma_64f_LP", "vorxExtract_m_32f_S2",
                   "vorxExtract_maT_64f_PS2", "vorxLoadIdentity_ma_32f_S",
                   "vorxGaxpy_va_32f_6x6_L", "vorxMul_maTva_32f_5x5_PS2",
                   "vorxCholeskyDecomp_ma_64f_5x5_LS2", "vorxDet_m_32f", "vorxDet_ma_64f_3x3_L",
                   "a6_Det_ma_64f_6x6_L", "a6_Det_m_32f_3x3"]
        absent = ["vorxCrossProduct_vv_32f", "vorxCrossProduct_vv_32f_4x1",
                  "vorxCopy_va_32f", "vorxCopy_va_32f_S2", "vorxCopy_v_32f_SS",
                  "vorxExtract_m_32f", "vorxExtract_va_32f", "vorxExtract_va_32f_P",
                  "vorxExtract_m_32f_PS2", "vorxLoadIdentity_ma_32f",
                  "vorxLoadIdentity_ma_32f_S2", "vorxLoadIdentity_ma_32f_3x3_S",
                  "vorxAdd_cv_32f", "vorxAdd_vva_32f", "vorxAdd_mma_32f", "vorxAdd_mc_32f",
                  "vorxAdd_vv_32f_L", "vorxMul_mv_32f_PS2", "vorxMul_cm_32f",
                  "vorxLComb_vva_32f", "vorxTrace_mT_32f", "vorxDet_maT_32f",
                  "vorxLUBackSubst_mav_32f", "vorxQRBackSubst_mav_32f_3x3",
                  "vorxGaxpy_v_32f_3x1", "vorxAdd_mm_32f_2x2", "vorxAdd_mm_32f_4x3",
                  "vorxDet_m_32f_3x3_L", "a6_Det_m_32f_3x3_L", "a6_Det_ma_32f",
                  "vorxa6_Det_m_32f_3x3", "a6_Det_ma_32f_3x3_LS2"]
        for n in present:
            self.assertIn(n, BY_NAME)
        for n in absent:
            self.assertNotIn(n, BY_NAME)

    def test_the_irregular_families_name_for_name(self):
        def names(pattern, **parts):
            out = {pattern}
            for key, values in parts.items():
                out = {n.replace("{%s}" % key, v) for n in out for v in values}
            return out

        types = ["32f", "64f"]
        pairs = [a + b for a in "SPL" for b in "SPL"]
        cases = {
            "Copy": names("vorxCopy_{c}_{t}_{l}", c=["va", "ma"], t=types, l=pairs),
            "Extract": names("vorxExtract_{c}_{t}_{l}", c=["v", "m", "mT"], t=types, l=["S2", "P"])
                       | names("vorxExtract_{c}_{t}_{l}", c=["va", "ma", "maT"], t=types,
                               l=["S2", "PS2", "LS2"]),
            "LoadIdentity": names("vorxLoadIdentity_ma_{t}_{l}", t=types, l=["S", "P", "L"]),
            "CrossProduct": names("vorxCrossProduct_vv_{t}_3x1{l}", t=types, l=["", "_S2", "_P"])
                            | names("vorxCrossProduct_{c}_{t}_3x1{l}", c=["vav", "vva", "vava"],
                                    t=types, l=["", "_S2", "_P", "_PS2", "_L", "_LS2"]),
        }
        for family, expected in cases.items():
            got = {f.name for f in ALL_FUNCS if f.name.startswith("vorx" + family + "_")}
            self.assertEqual(got, expected, family)
        kernels = {f.name for f in ALL_FUNCS if not f.name.startswith("vorx")}
        sizes = ["3x3", "4x4", "5x5", "6x6"]
        self.assertEqual(kernels, names("a6_Det_{c}_{t}_{s}", c=["m", "ma"], t=types, s=sizes)
                         | names("a6_Det_ma_{t}_{s}_L", t=types, s=sizes))
        for n in kernels:
            self.assertRegex(n, KERNEL_RE)


class ArgumentRulesTest(unittest.TestCase):
    """Rules every list keeps: types of each kind of argument, where count and
    the sizes stand, and what is const."""

    def test_argument_types(self):
        for f in ALL_FUNCS:
            T = {"32f": "float", "64f": "double"}[f.tname]
            for p in f.params:
                with self.subTest(name=f.name, param=p.name):
                    if p.name.endswith(("Stride", "ByteShift")):
                        self.assertEqual(p.ctype, "int32_t")
                    elif p.name in SIZE_NAMES or p.name == "count":
                        self.assertEqual(p.ctype, "uint32_t")
                    elif p.name in ("value", "scale", "scale1", "scale2"):
                        self.assertEqual(p.ctype, T)
                    elif p.name == "scratch":
                        self.assertEqual(p.ctype, T + "*")
                    elif p.name == "perm":
                        self.assertEqual(p.ctype, "uint32_t*" if f.family == "LUDecomp"
                                         else "const uint32_t*")
                    elif p.name.startswith("src"):
                        self.assertTrue(p.ctype.startswith("const " + T + "*"))
                    else:
                        self.assertEqual(p.name, "dst")
                        self.assertTrue(p.ctype.startswith(T + "*"))

    def test_scalar_results_and_dense_buffers_are_plain_pointers(self):
        plain = {"DotProduct", "L2Norm", "Trace", "FrobNorm", "Det", "Extract"}
        for f in ALL_FUNCS:
            if f.family in plain:
                T = {"32f": "float", "64f": "double"}[f.tname]
                dst = [p for p in f.params if p.name.startswith("dst")]
                self.assertEqual([(p.name, p.ctype) for p in dst], [("dst", T + "*")], f.name)

    def test_count_is_last_and_only_with_an_array(self):
        for f in ALL_FUNCS:
            names = [p.name for p in f.params]
            if is_array_code(f.code):
                self.assertEqual(names[-1], "count", f.name)
            self.assertEqual("count" in names, is_array_code(f.code), f.name)

    def test_fixed_sizes_take_no_sizes(self):
        for f in ALL_FUNCS:
            sizes = [p.name for p in f.params if p.name in SIZE_NAMES]
            if f.size:
                self.assertEqual(sizes, [], f.name)
            else:
                self.assertNotEqual(sizes, [], f.name)

    def test_return_types(self):
        # The kernels too: every exported function but the version query returns a
        # status (a List-layout kernel's is 0, or -2 for a null list entry).
        for f in ALL_FUNCS:
            proto = f.prototype()
            self.assertTrue(proto.startswith("vorxStatus " + f.name + "("), proto)


def split(s):
    return s.replace(",", " ").split()


# Exact argument lists, by name.
EXAMPLES = {
    # Matrix array plus one matrix, in each layout, and its run-time size form.
    "vorxAdd_mam_32f_3x3": "src1 src1ObjectStride src1RowStride src2 src2RowStride dst "
                           "dstObjectStride dstRowStride count",
    "vorxAdd_mam_32f_3x3_S2": "src1 src1ObjectStride src1RowStride src1ElemStride src2 "
                              "src2RowStride src2ElemStride dst dstObjectStride dstRowStride "
                              "dstElemStride count",
    "vorxAdd_mam_32f_3x3_P": "src1 src1ByteShift src2 src2ByteShift dst dstByteShift count",
    "vorxAdd_mam_32f_3x3_PS2": "src1 src1ByteShift src1ObjectStride src2 src2ByteShift dst "
                               "dstByteShift dstObjectStride count",
    "vorxAdd_mam_32f_3x3_L": "src1 src1ByteShift src1RowStride src2 src2RowStride dst "
                             "dstByteShift dstRowStride count",
    "vorxAdd_mam_32f_3x3_LS2": "src1 src1ByteShift src1RowStride src1ElemStride src2 "
                               "src2RowStride src2ElemStride dst dstByteShift dstRowStride "
                               "dstElemStride count",
    "vorxAdd_mam_32f": "src1 src1ObjectStride src1RowStride src2 src2RowStride dst "
                       "dstObjectStride dstRowStride width height count",
    "vorxAdd_vav_32f_LS2": "src1 src1ByteShift src1ElemStride src2 src2ElemStride dst "
                           "dstByteShift dstElemStride len count",
    "vorxAdd_vav_32f_P": "src1 src1ByteShift src2 src2ByteShift dst dstByteShift len count",
    # The constant first in the name, the vector's arguments first in the call.
    "vorxSub_cva_64f_3x1_PS2": "src srcByteShift srcObjectStride value dst dstByteShift "
                               "dstObjectStride count",
    "vorxSub_vva_32f_LS2": "src1 src1ElemStride src2 src2ByteShift src2ElemStride dst "
                           "dstByteShift dstElemStride len count",
    "vorxSub_mTma_32f_4x4_PS2": "src1 src1ByteShift src2 src2ByteShift src2ObjectStride dst "
                                "dstByteShift dstObjectStride count",

    # Scales stand behind the vector they weight.
    "vorxSaxpy_vv_32f": "src1 scale src2 dst len",
    "vorxSaxpy_vva_32f_L": "src1 scale src2 src2ByteShift dst dstByteShift len count",
    "vorxSaxpy_vav_64f_6x1_PS2": "src1 src1ByteShift src1ObjectStride scale src2 src2ByteShift "
                                 "dst dstByteShift dstObjectStride count",
    "vorxLComb_vava_32f_LS2": "src1 src1ByteShift src1ElemStride scale1 src2 src2ByteShift "
                              "src2ElemStride scale2 dst dstByteShift dstElemStride len count",
    "vorxLComb_vv_64f_4x1_P": "src1 src1ByteShift scale1 src2 src2ByteShift scale2 dst "
                              "dstByteShift",

    # Scalar results: a bare dst, sizes behind it.
    "vorxDotProduct_vav_32f_LS2": "src1 src1ByteShift src1ElemStride src2 src2ElemStride dst "
                                  "len count",
    "vorxDotProduct_vava_32f_PS2": "src1 src1ByteShift src1ObjectStride src2 src2ByteShift "
                                   "src2ObjectStride dst len count",
    "vorxL2Norm_va_32f_S2": "src srcObjectStride srcElemStride dst len count",
    "vorxL2Norm_v_64f_5x1": "src dst",
    "vorxCrossProduct_vv_32f_3x1": "src1 src2 dst",
    "vorxCrossProduct_vva_32f_3x1_PS2": "src1 src1ByteShift src2 src2ByteShift "
                                        "src2ObjectStride dst dstByteShift dstObjectStride count",

    # Multiplication by a constant.
    "vorxMul_vac_64f_4x1_PS2": "src srcByteShift srcObjectStride value dst dstByteShift "
                               "dstObjectStride count",
    "vorxMul_maTc_32f_LS2": "src srcByteShift srcRowStride srcElemStride value dst "
                            "dstByteShift dstRowStride dstElemStride width height count",
    "vorxMul_mTc_64f_P": "src srcByteShift value dst dstByteShift width height",

    # Products: each source's sizes behind its own arguments.
    "vorxMul_maTva_32f_5x5_PS2": "src1 src1ByteShift src1ObjectStride src2 src2ByteShift "
                                 "src2ObjectStride dst dstByteShift dstObjectStride count",
    "vorxMul_mva_32f_L": "src1 src1RowStride src1Width src1Height src2 src2ByteShift src2Len "
                         "dst dstByteShift count",
    "vorxMul_mav_64f_LS2": "src1 src1ByteShift src1RowStride src1ElemStride src1Width "
                           "src1Height src2 src2ElemStride src2Len dst dstByteShift "
                           "dstElemStride count",
    "vorxMul_mTv_32f_S2": "src1 src1RowStride src1ElemStride src1Width src1Height src2 "
                          "src2ElemStride src2Len dst dstElemStride",
    "vorxMul_mmT_64f_S2": "src1 src1RowStride src1ElemStride src1Width src1Height src2 "
                          "src2RowStride src2ElemStride src2Width src2Height dst dstRowStride "
                          "dstElemStride",
    "vorxMul_mTma_32f": "src1 src1RowStride src1Width src1Height src2 src2ObjectStride "
                        "src2RowStride src2Width src2Height dst dstObjectStride dstRowStride "
                        "count",
    # One matrix for all vectors, in its plain form whatever the suffix.
    "vorxGaxpy_va_32f_PS2": "src1 src1ByteShift src2 src2ByteShift src2ObjectStride src3 "
                            "src3ByteShift src3ObjectStride dst dstByteShift dstObjectStride "
                            "width height count",
    "vorxGaxpy_va_32f_L": "src1 src1RowStride src2 src2ByteShift src3 src3ByteShift dst "
                          "dstByteShift width height count",
    "vorxGaxpy_v_64f_4x4_S2": "src1 src1RowStride src1ElemStride src2 src2ElemStride src3 "
                              "src3ElemStride dst dstElemStride",

    # Matrix functionals and shape.
    "vorxTrace_ma_32f_LS2": "src srcByteShift srcRowStride srcElemStride widthHeight dst count",
    "vorxTrace_m_64f_3x3": "src srcRowStride dst",
    "vorxFrobNorm_ma_32f_PS2": "src srcByteShift srcObjectStride width height dst count",
    "vorxFrobNorm_m_64f_S2": "src srcRowStride srcElemStride width height dst",
    "vorxTranspose_ma_64f_L": "src srcByteShift srcRowStride width height dst dstByteShift "
                              "dstRowStride count",
    "vorxTranspose_m_32f_6x6_P": "src srcByteShift dst dstByteShift",

    # Layout converters: letter layouts, dense destinations.
    "vorxCopy_va_32f_SS": "src srcObjectStride srcElemStride dst dstObjectStride dstElemStride "
                          "len count",
    "vorxCopy_va_32f_SP": "src srcObjectStride srcElemStride dst dstByteShift dstObjectStride "
                          "len count",
    "vorxCopy_va_64f_LL": "src srcByteShift srcElemStride dst dstByteShift dstElemStride len "
                          "count",
    "vorxCopy_ma_32f_SS": "src srcObjectStride srcRowStride srcElemStride dst dstObjectStride "
                          "dstRowStride dstElemStride width height count",
    "vorxCopy_ma_32f_PL": "src srcByteShift srcObjectStride dst dstByteShift dstRowStride "
                          "dstElemStride width height count",
    "vorxCopy_ma_64f_PP": "src srcByteShift srcObjectStride dst dstByteShift dstObjectStride "
                          "width height count",
    "vorxExtract_v_32f_S2": "src srcElemStride dst len",
    "vorxExtract_v_64f_P": "src srcByteShift dst len",
    "vorxExtract_va_32f_S2": "src srcObjectStride srcElemStride dst len count",
    "vorxExtract_va_32f_LS2": "src srcByteShift srcElemStride dst len count",
    "vorxExtract_va_64f_PS2": "src srcByteShift srcObjectStride dst len count",
    "vorxExtract_mT_32f_S2": "src srcRowStride srcElemStride dst width height",
    "vorxExtract_mT_32f_P": "src srcByteShift dst width height",
    "vorxExtract_ma_64f_LS2": "src srcByteShift srcRowStride srcElemStride dst width height "
                              "count",
    "vorxExtract_maT_32f_PS2": "src srcByteShift srcObjectStride dst width height count",
    "vorxLoadIdentity_ma_32f_S": "dst dstObjectStride dstRowStride dstElemStride width height "
                                 "count",
    "vorxLoadIdentity_ma_64f_L": "dst dstByteShift dstRowStride dstElemStride width height count",
    "vorxLoadIdentity_ma_32f_P": "dst dstByteShift dstObjectStride width height count",

    # LU: perm behind the matrix; the mva list keeps an object stride it never reads.
    "vorxLUDecomp_m_32f": "src srcRowStride perm dst dstRowStride size",
    "vorxLUDecomp_ma_64f_P": "src srcByteShift perm dst dstByteShift size count",
    "vorxLUBackSubst_mva_32f_L": "src srcObjectStride srcRowStride perm src2 src2ByteShift dst "
                                 "dstByteShift size count",
    "vorxLUBackSubst_mva_32f_PS2": "src srcByteShift perm src2 src2ByteShift src2ObjectStride "
                                   "dst dstByteShift dstObjectStride size count",
    "vorxLUBackSubst_mava_64f_4x4_PS2": "src srcByteShift srcObjectStride perm src2 "
                                        "src2ByteShift src2ObjectStride dst dstByteShift "
                                        "dstObjectStride count",

    # Determinant and inversion: any size with scratch, fixed sizes without.
    "vorxDet_m_32f": "src srcRowStride size scratch dst",
    "vorxDet_ma_64f_LS2": "src srcByteShift srcRowStride srcElemStride size scratch dst count",
    "vorxDet_m_32f_3x3": "src srcRowStride dst",
    "vorxDet_ma_64f_6x6_L": "src srcByteShift srcRowStride dst count",
    "vorxDet_ma_32f_5x5_PS2": "src srcByteShift srcObjectStride dst count",
    "a6_Det_m_32f_3x3": "src srcRowStride dst",
    "a6_Det_ma_64f_6x6": "src srcObjectStride srcRowStride dst count",
    "a6_Det_ma_32f_4x4_L": "src srcByteShift srcRowStride dst count",
    "vorxInvert_ma_32f_PS2": "src srcByteShift srcObjectStride size scratch dst dstByteShift "
                             "dstObjectStride count",
    "vorxInvert_m_64f": "src srcRowStride size scratch dst dstRowStride",
    "vorxInvert_m_32f_5x5_S2": "src srcRowStride srcElemStride dst dstRowStride dstElemStride",

    # Cholesky: one size, behind dst.
    "vorxCholeskyDecomp_ma_32f_L": "src srcByteShift srcRowStride dst dstByteShift dstRowStride "
                                   "widthHeight count",
    "vorxCholeskyDecomp_ma_64f_5x5_LS2": "src srcByteShift srcRowStride srcElemStride dst "
                                         "dstByteShift dstRowStride dstElemStride count",
    "vorxCholeskyBackSubst_mva_32f_L": "src1 src1RowStride src2 src2ByteShift dst dstByteShift "
                                       "widthHeight count",
    "vorxCholeskyBackSubst_mva_64f_PS2": "src1 src1ByteShift src2 src2ByteShift "
                                         "src2ObjectStride dst dstByteShift dstObjectStride "
                                         "widthHeight count",
    "vorxCholeskyBackSubst_mava_32f_3x3_P": "src1 src1ByteShift src2 src2ByteShift dst "
                                            "dstByteShift count",

    # QR: scratch before dst, before src2 in the back substitution.
    "vorxQRDecomp_m_32f": "src srcRowStride scratch dst dstRowStride width height",
    "vorxQRDecomp_ma_64f_PS2": "src srcByteShift srcObjectStride scratch dst dstByteShift "
                               "dstObjectStride width height count",
    "vorxQRBackSubst_mv_32f_S2": "src1 src1RowStride src1ElemStride scratch src2 src2ElemStride "
                                 "dst dstElemStride width height",
    "vorxQRBackSubst_mva_32f_LS2": "src1 src1ObjectStride src1RowStride src1ElemStride scratch "
                                   "src2 src2ByteShift src2ElemStride dst dstByteShift "
                                   "dstElemStride width height count",
    "vorxQRBackSubst_mva_64f_P": "src1 src1ByteShift scratch src2 src2ByteShift dst "
                                 "dstByteShift width height count",
    "vorxQRBackSubst_mava_32f_6x6_L": "src1 src1ByteShift src1RowStride scratch src2 "
                                      "src2ByteShift dst dstByteShift count",
}

# Argument counts of whole code groups, layouts in the order none, S2, P, PS2,
# L, LS2 (run-time size forms; a fixed size drops the sizes).
GROUP_ARITIES = {
    "vorxSaxpy_vva_32f": [8, 11, 9, 11, 8, 11],
    "vorxLComb_vava_64f": [10, 13, 10, 13, 10, 13],
    "vorxMul_mama_32f": [14, 17, 11, 14, 14, 17],
    "vorxMul_mma_64f_3x3": [9, 12, 7, 9, 9, 12],
    "vorxMul_mava_32f": [11, 14, 10, 13, 11, 14],
    "vorxMul_mav_32f_4x4": [7, 10, 7, 9, 7, 10],
    "vorxMul_mac_32f_6x6": [8, 10, 6, 8, 8, 10],
    "vorxGaxpy_va_64f": [11, 15, 11, 14, 11, 15],
}


class ArgumentListsTest(unittest.TestCase):
    def test_exact_lists(self):
        for name, expected in EXAMPLES.items():
            with self.subTest(name=name):
                self.assertIn(name, BY_NAME)
                self.assertEqual(params(name), split(expected))

    def test_arities_of_whole_groups(self):
        suffixes = ["", "_S2", "_P", "_PS2", "_L", "_LS2"]
        for stem, arities in GROUP_ARITIES.items():
            for suffix, n in zip(suffixes, arities):
                with self.subTest(name=stem + suffix):
                    self.assertEqual(len(params(stem + suffix)), n)

    def test_transposed_codes_take_the_plain_list(self):
        for f in ALL_FUNCS:
            if "T" in f.code:
                twin = f.name.replace("_%s_" % f.code, "_%s_" % f.code.replace("T", ""), 1)
                self.assertEqual(params(f.name), params(twin), f.name)


class UnitsTest(unittest.TestCase):
    """The source is cut by family, group and size, with the listed exceptions."""

    def units(self, prefix):
        return {f.unit for f in ALL_FUNCS if f.name.startswith(prefix)}

    def test_hand_cut_units(self):
        self.assertEqual(self.units("vorxCrossProduct_"),
                         {"vorxcrossproduct_" + g for g in ("vv", "vav", "vva", "vava")})
        self.assertEqual(self.units("vorxCopy_"), {"vorxcopy32f", "vorxcopy64f"})
        self.assertEqual(self.units("vorxExtract_"), {"vorxextract32f", "vorxextract64f"})
        self.assertEqual(self.units("vorxLoadIdentity_"), {"vorxload"})
        self.assertEqual(self.units("vorxCholeskyDecomp_"), {"vorxcholdecomp_m", "vorxcholdecomp_ma"})
        self.assertEqual(self.units("vorxCholeskyBackSubst_"),
                         {"vorxcholbacksubst_" + g for g in ("mv", "mva", "mava")})
        self.assertEqual(self.units("a6_"), {"vorxDet_%s_%s_a6w7" % (c, s) for c in ("m", "ma")
                                             for s in ("3x3", "4x4", "5x5", "6x6")})
        self.assertEqual(BY_NAME["a6_Det_ma_32f_5x5_L"].unit, "vorxDet_ma_5x5_a6w7")

    def test_default_units_hold_one_group_at_one_size(self):
        f = BY_NAME["vorxAdd_maTmT_64f_3x3_LS2"]
        self.assertEqual(f.unit, "vorxadd_mam_3x3")
        self.assertEqual(BY_NAME["vorxMul_mTc_32f"].unit, "vorxmul_mc")
        self.assertEqual(BY_NAME["vorxQRBackSubst_mva_32f_4x4_P"].unit, "vorxqrbacksubst_mva_4x4")
        # Outside the hand-cut families a unit holds one family, one group, one size.
        seen = {}
        for f in ALL_FUNCS:
            key = (f.family, f.group, f.size)
            if "unit" not in f.row:
                seen.setdefault(f.unit, set()).add(key)
        self.assertEqual([u for u, keys in seen.items() if len(keys) > 1], [])


if __name__ == "__main__":
    unittest.main()
