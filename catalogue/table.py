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

Row fields: family, operand codes, sizes ('vector', 'matrix', '3x1', 'generic'),
template, and `built` once the family is implemented (the header and the export
list hold exactly the built rows). `layouts` overrides the usual set (three
layouts without an array operand, six with one); `unit` names the source unit
when it is not the default `vorx<family>_<group>[_<size>]`.
"""

VEC_SOURCES_2 = "src1:@1 src2:@2 dst:*v #len count?"
VEC_SOURCE_VALUE = "src:@1 value:val dst:*v #len count?"
MAT_SOURCES_2 = "src1:@1 src2:@2 dst:*m #width #height count?"
MAT_PRODUCT = "src1:@1 #src1Width #src1Height src2:@2 #src2Width #src2Height dst:*m count?"

MAT_T2 = ["mm", "mmT", "mTm", "mTmT", "mam", "mamT", "maTm", "maTmT",
          "mama", "mamaT", "maTma", "maTmaT"]
MAT_SINGLE_ARRAY2 = ["mma", "mmaT", "mTma", "mTmaT"]

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
    dict(family="Add", codes=" ".join(MAT_T2), sizes="matrix", args=MAT_SOURCES_2),
    dict(family="Sub", codes=" ".join(MAT_T2 + MAT_SINGLE_ARRAY2), sizes="matrix",
         args=MAT_SOURCES_2),

    # Matrix by matrix: each source's sizes stand behind its own arguments.
    dict(family="Mul", codes=" ".join(MAT_T2 + MAT_SINGLE_ARRAY2), sizes="matrix",
         args=MAT_PRODUCT),

    # LU decomposition and back substitution.
    dict(family="LUDecomp", codes="m ma", sizes="matrix",
         args="src:@1 perm:u32p dst:*m #size count?", built=True),
    dict(family="LUBackSubst", codes="mv mava", sizes="matrix",
         args="src:@1 perm:cu32p src2:@2 dst:*v #size count?", built=True),
    # One matrix for all right sides, with the unread object stride of the mava list.
    dict(family="LUBackSubst", codes="mva", sizes="matrix",
         args="src:mq perm:cu32p src2:@2 dst:*v #size count?", built=True),
]
