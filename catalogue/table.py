"""The catalogue of vorx: every exported name and its argument list, as data.

One row stands for a family and a set of operand codes that share one argument
template; generate.py expands each row over element types, sizes and layouts.
Nothing else in the tree spells a name or an argument order: the public header,
the export list, the wrappers and the test adapters are all produced from here.

Argument template tokens (space separated, in call order):

    NAME:KIND     an operand and its layout arguments. KIND is an operand kind
                  (v va m ma mT maT, or mq: a single matrix whose list carries an
                  object stride it never reads), @1 @2 @3 for the kind of the
                  name's n-th operand code, or *v / *m for a dst that is an array
                  whenever the call has one. /1 or /2 after the kind takes that
                  letter of a two-letter layout suffix (S, P, L).
    NAME:val      a scalar of the element type, by value
    NAME:res      a pointer to scalar results (count adjacent ones for arrays)
    NAME:TYPE     a plain argument: u32p, cu32p (perm arrays), Tp, cTp
                  (element buffers outside the layout scheme), i32, u32
    #NAME         a size (unsigned); absent from fixed-size forms
    count?        the object count, present when any operand is an array
    [ROWS,COLS]   after an operand or buffer: its shape for the tests' harness, as
                  expressions over the size names and `objects` (count in array
                  calls, else 1); `^` marks the operation's shape, which a transposed
                  kind stores the other way round. Without it a vector has the
                  length `len` (or the square size), a matrix `^height,width` (or
                  the square size twice), a buffer `objects` times the length.

Row fields: family, operand codes, sizes ('vector', 'matrix', '3x1', 'square' for
the fixed matrix sizes alone, 'generic'), template, and `built` once the family is
implemented (the header and the export list hold exactly the built rows).
`layouts` overrides the usual set (three layouts without an array operand, six
with one); it may also be a set of layout letters (S, P, L, or pairs of them,
source first), which the /1 /2 suffixes of the template read. `unit` names the
source unit when it is not the default `vorx<family>_<group>[_<size>]`; it is
given the Function. `prefix` replaces `vorx` in the name (the determinant
kernels) and `ret` the return type `vorxStatus`.
"""

VEC_SOURCES_2 = "src1:@1 src2:@2 dst:*v #len count?"
VEC_SOURCE_VALUE = "src:@1 value:val dst:*v #len count?"
MAT_SOURCES_2 = "src1:@1 src2:@2 dst:*m #width #height count?"
MAT_PRODUCT = ("src1:@1[^src1Height,src1Width] #src1Width #src1Height "
               "src2:@2[^src2Height,src2Width] #src2Width #src2Height dst:*m[src1Height,src2Width] count?")

MAT_T2 = ["mm", "mmT", "mTm", "mTmT", "mam", "mamT", "maTm", "maTmT",
          "mama", "mamaT", "maTma", "maTmaT"]
MAT_SINGLE_ARRAY2 = ["mma", "mmaT", "mTma", "mTmaT"]

# Copy's layout pairs, source letter first: S Strided, P Pointer-strided, L List-strided.
COPY_PAIRS = [a + b for a in "SPL" for b in "SPL"]


def det_kernel_unit(f):
    """The hand-written kernels: one unit per operand code and size."""
    return "vorxDet_%s_%s_a6w7" % (f.code, f.size)


ROWS = [
    # Vector addition and subtraction.
    dict(family="Add", codes="vv vav vava", sizes="vector", args=VEC_SOURCES_2, built=True),
    dict(family="Add", codes="vc vac", sizes="vector", args=VEC_SOURCE_VALUE, built=True),
    dict(family="Sub", codes="vv vav vva vava", sizes="vector", args=VEC_SOURCES_2, built=True),
    dict(family="Sub", codes="vc vac", sizes="vector", args=VEC_SOURCE_VALUE, built=True),
    # Constant first in the name, the vector's arguments first in the call.
    dict(family="Sub", codes="cv cva", sizes="vector", args="src:@2 value:val dst:*v #len count?",
         built=True),

    # Matrix addition and subtraction.
    dict(family="Add", codes=" ".join(MAT_T2), sizes="matrix", args=MAT_SOURCES_2, built=True),
    dict(family="Sub", codes=" ".join(MAT_T2 + MAT_SINGLE_ARRAY2), sizes="matrix",
         args=MAT_SOURCES_2, built=True),

    # Matrix by matrix: each source's sizes stand behind its own arguments.
    dict(family="Mul", codes=" ".join(MAT_T2 + MAT_SINGLE_ARRAY2), sizes="matrix",
         args=MAT_PRODUCT, built=True),

    # LU decomposition and back substitution.
    dict(family="LUDecomp", codes="m ma", sizes="matrix",
         args="src:@1 perm:u32p dst:*m #size count?", built=True),
    dict(family="LUBackSubst", codes="mv mava", sizes="matrix",
         args="src:@1 perm:cu32p src2:@2 dst:*v #size count?", built=True),
    # One matrix for all right sides, with the unread object stride of the mava list.
    dict(family="LUBackSubst", codes="mva", sizes="matrix",
         args="src:mq perm:cu32p src2:@2 dst:*v #size count?", built=True),

    # Saxpy and linear combination: each scale stands behind the vector it weights.
    dict(family="Saxpy", codes="vv vav vva vava", sizes="vector",
         args="src1:@1 scale:val src2:@2 dst:*v #len count?", built=True),
    dict(family="LComb", codes="vv vav vava", sizes="vector",
         args="src1:@1 scale1:val src2:@2 scale2:val dst:*v #len count?", built=True),

    # Dot product and L2 norm give one scalar per object, adjacent, whatever the layout.
    dict(family="DotProduct", codes="vv vav vava", sizes="vector",
         args="src1:@1 src2:@2 dst:res #len count?", built=True),
    dict(family="L2Norm", codes="v va", sizes="vector", args="src:@1 dst:res #len count?", built=True),
    # The cross product exists at length 3 only (no size argument); one unit per group.
    dict(family="CrossProduct", codes="vv vav vva vava", sizes="3x1",
         args="src1:@1[3] src2:@2[3] dst:*v[3] count?", unit=lambda f: "vorxcrossproduct_" + f.group,
         built=True),

    # Multiplication by a constant, which is always the second operand.
    dict(family="Mul", codes="vc vac", sizes="vector", args=VEC_SOURCE_VALUE, built=True),
    dict(family="Mul", codes="mc mTc mac maTc", sizes="matrix",
         args="src:@1 value:val dst:*m #width #height count?", built=True),
    # Matrix by vector: the sizes stand behind their own operand, as in matrix by matrix.
    # Every form runs src1Height results of src1Width terms, so src2 is read over
    # src1Width elements whatever src2Len says (they differ in non-square mTv calls).
    dict(family="Mul", codes="mv mTv mva mTva mav maTv mava maTva", sizes="matrix",
         args="src1:@1[^src1Height,src1Width] #src1Width #src1Height src2:@2[src1Width] #src2Len "
              "dst:*v[src1Height] count?", built=True),
    # Gaxpy names only the vectors' kind; the one matrix is never an array.
    dict(family="Gaxpy", codes="v va", sizes="matrix",
         args="src1:m src2:@1[width] src3:@1[height] dst:*v[height] #width #height count?", built=True),

    # Matrix functionals: the sizes come before the scalar results.
    dict(family="Trace", codes="m ma", sizes="matrix",
         args="src:@1 #widthHeight dst:res count?", built=True),
    dict(family="FrobNorm", codes="m ma", sizes="matrix",
         args="src:@1 #width #height dst:res count?", built=True),
    # The sizes of the transpose are those of the source; dst has `width` rows.
    dict(family="Transpose", codes="m ma", sizes="matrix",
         args="src:@1 #width #height dst:*m[width,height] count?", built=True),

    # Layout converters, any size only, one unit per element type. Copy names the
    # source's and the destination's layout by one letter each.
    dict(family="Copy", codes="va", sizes="generic", layouts=COPY_PAIRS,
         args="src:@1/1 dst:@1/2 #len count?", unit=lambda f: "vorxcopy" + f.tname, built=True),
    dict(family="Copy", codes="ma", sizes="generic", layouts=COPY_PAIRS,
         args="src:@1/1 dst:@1/2 #width #height count?", unit=lambda f: "vorxcopy" + f.tname,
         built=True),
    # Extract gathers into a dense buffer and has no Contiguous form.
    dict(family="Extract", codes="v", sizes="generic", layouts=["S2", "P"],
         args="src:@1 dst:Tp #len count?", unit=lambda f: "vorxextract" + f.tname, built=True),
    dict(family="Extract", codes="va", sizes="generic", layouts=["S2", "PS2", "LS2"],
         args="src:@1 dst:Tp #len count?", unit=lambda f: "vorxextract" + f.tname, built=True),
    dict(family="Extract", codes="m mT", sizes="generic", layouts=["S2", "P"],
         args="src:@1 dst:Tp[objects*width*height] #width #height count?",
         unit=lambda f: "vorxextract" + f.tname, built=True),
    dict(family="Extract", codes="ma maT", sizes="generic", layouts=["S2", "PS2", "LS2"],
         args="src:@1 dst:Tp[objects*width*height] #width #height count?",
         unit=lambda f: "vorxextract" + f.tname, built=True),
    # The running diagonal of LoadIdentity puts the 1.0 of object k, row i at column
    # k*height + i: the rows the harness lays out reach that far.
    dict(family="LoadIdentity", codes="ma", sizes="generic", layouts=["S", "P", "L"],
         args="dst:@1/1[height,width+objects*height] #width #height count?",
         unit=lambda f: "vorxload", built=True),

    # Determinant: the any-size forms eliminate in a caller's scratch buffer, the
    # fixed sizes have closed forms and no buffer.
    dict(family="Det", codes="m ma", sizes="generic",
         args="src:@1 #size scratch:Tp[size*size+size] dst:res count?", built=True),
    # The fixed sizes: the order reaches the body (and the tests' shapes) as `size`.
    dict(family="Det", codes="m ma", sizes="square", args="src:@1 dst:res #size count?", built=True),
    # The kernels behind the fixed sizes in layouts none and L: the same lists as
    # the exported forms, and a status like every exported function. Only the
    # List-layout kernel's is read (0, or -2 at a null entry).
    dict(family="Det", prefix="a6_", codes="m ma", sizes="square", layouts=[""],
         args="src:@1 dst:res #size count?", unit=det_kernel_unit, built=True),
    dict(family="Det", prefix="a6_", codes="ma", sizes="square", layouts=["L"],
         args="src:@1 dst:res #size count?", unit=det_kernel_unit, built=True),

    # Inversion: the same split between any size with scratch and fixed sizes without.
    dict(family="Invert", codes="m ma", sizes="generic",
         args="src:@1 #size scratch:Tp[size*size+size] dst:*m count?", built=True),
    dict(family="Invert", codes="m ma", sizes="square", args="src:@1 dst:*m #size count?", built=True),

    # Cholesky: the fixed sizes forward to the any-size form, one unit per group.
    dict(family="CholeskyDecomp", codes="m ma", sizes="matrix",
         args="src:@1 dst:*m #widthHeight count?", unit=lambda f: "vorxcholdecomp_" + f.group,
         built=True),
    dict(family="CholeskyBackSubst", codes="mv mva mava", sizes="matrix",
         args="src1:@1 src2:@2 dst:*v #widthHeight count?",
         unit=lambda f: "vorxcholbacksubst_" + f.group, built=True),

    # QR: a scratch vector of `height` elements stands before dst (before src2 in
    # the back substitution).
    dict(family="QRDecomp", codes="m ma", sizes="matrix",
         args="src:@1 scratch:Tp[height] dst:*m #width #height count?", built=True),
    dict(family="QRBackSubst", codes="mv mava", sizes="matrix",
         args="src1:@1 scratch:Tp[height] src2:@2[height] dst:*v[width] #width #height count?",
         built=True),
    # One matrix for all right sides, with the unread object stride of the mava list.
    dict(family="QRBackSubst", codes="mva", sizes="matrix",
         args="src1:mq scratch:Tp[height] src2:@2[height] dst:*v[width] #width #height count?",
         built=True),
]
