"""What each family promises beyond its argument lists, as data for the manual.

One entry per family of the table (the `family` field of its rows): a title, the
statuses its functions can return besides 0, and a few lines on the order of the
arithmetic, its precision, its deviations and what may alias what. Every family of
the table needs an entry (the manual's test fails otherwise).
"""

# Shared by every family: the frame of checks and the arithmetic of the two types.
COMMON = [
    "32f: SSE single precision, one rounding per operation. 64f: the x87 unit at the "
    "precision the caller has set, rounded to double at the store. The library never "
    "changes the floating-point control words.",
    "Checks come before any store: null top-level pointers (-8), then sizes and counts "
    "(-6), then null table or list entries where the family tests them (-8).",
    "Operands may not overlap unless this page says they may.",
]

SIZES_ZERO = "A zero size (in the forms with run-time sizes) or a zero count is -6."

FAMILIES = {
    "Add": dict(
        title="Addition of vectors and matrices",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "dst = src1 + src2 element by element; `vc` forms add one constant to every element.",
            SIZES_ZERO,
            "dst may be a source that has the same kind as dst (a plain source of a plain "
            "call, an array source of an array call), when it is not read transposed.",
            "Some 32f fixed-size array forms in Contiguous and List layouts read the single "
            "source before the count is tested.",
        ]),
    "Sub": dict(
        title="Subtraction of vectors and matrices",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "dst = src1 - src2 element by element; `vc`: src - value; `cv`: value - src, "
            "whose argument list has the vector first and the constant second.",
            SIZES_ZERO,
            "Aliasing as for Add.",
        ]),
    "Mul": dict(
        title="Products: matrix by matrix, matrix by vector, by a constant",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "Matrix by matrix: dst = op(src1) op(src2), each source's sizes behind its own "
            "arguments. Each code tests its own pair of sizes for conformity (-6), kept as "
            "it stands: `mTm` compares src1Height with src2Height, `mma` and `mama` "
            "src1Height with src2Width, so a product of non-square operands can be refused "
            "where the mathematics would conform. The fixed 32f sizes in Contiguous and "
            "List layouts sum each result row from the first product upward in registers; "
            "elsewhere each element is a sum of products by ascending k.",
            "Matrix by vector: src1Height results of src1Width terms, in a tree of sums "
            "fixed per size for the packed 32f forms, ascending otherwise; src2 is read over "
            "src1Width elements.",
            "By a constant: each element times value; dst may be the source.",
            "In place (dst one of the sources) only for the forms the tests list as such; "
            "otherwise dst must not overlap a source.",
        ]),
    "Gaxpy": dict(
        title="Gaxpy: matrix by vector plus vector",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "dst = src1 src2 + src3, one matrix for every object (the code names the "
            "vectors' kind); height results of width terms, summed as matrix by vector "
            "sums them, then src3 added.",
            "The packed 32f fixed sizes may take dst as src2 or src3.",
        ]),
    "LUDecomp": dict(
        title="LU decomposition with partial pivoting",
        statuses=["BadSize", "NullPointer", "ZeroDivide"],
        lines=[
            "The source is copied into dst and eliminated there: L (unit diagonal, not "
            "stored) below and U on and above the diagonal. Rows never move; the exchanges "
            "are in perm (size entries per object).",
            "A pivot below 2^-23 in magnitude stops that object with -10.",
            "In array calls the last pivot of object n >= 1 is tested at a displaced place: "
            "n*size elements further along the row of element (perm[size-1], size-1) of that "
            "object (n rows further down the table in the Pointer layouts). That place must "
            "be readable, and a value there below the threshold gives -10.",
            "32f: every operation in single precision. 64f: each quotient and each "
            "product-sum rounded once by its store.",
            "dst may be src.",
        ]),
    "LUBackSubst": dict(
        title="Solving with LU factors",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "Forward substitution through the unit lower triangle, then back substitution, "
            "through perm, with dst as the only working vector. Each row sum starts at zero "
            "and runs by ascending column; 64f keeps it at register width and rounds at the "
            "store of x[i].",
            "No threshold: a zero pivot gives infinities or NaNs; perm is trusted.",
            "`mva`: one factor for every right side (its object stride is not read).",
        ]),
    "Saxpy": dict(
        title="Saxpy: src1 * scale + src2",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "Each element alone: 32f rounds the product, then the sum; 64f rounds once at "
            "the store. A zero scale still multiplies.",
            SIZES_ZERO,
            "dst may be a source of its own kind (plain in plain calls, array in arrays).",
        ]),
    "LComb": dict(
        title="Linear combination: src1 * scale1 + src2 * scale2",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "As Saxpy, with a scale behind each vector.",
            SIZES_ZERO,
        ]),
    "DotProduct": dict(
        title="Dot product",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "One scalar per object into adjacent results, whatever the layout. Sums run left "
            "to right from +0.0 except where a packed 32f form has its own order; 64f keeps "
            "the sum at register width and rounds once.",
        ]),
    "L2Norm": dict(
        title="Euclidean norm of vectors",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "The root of the dot product of the vector with itself, one per object into "
            "adjacent results. The 32f fixed sizes in Contiguous and List layouts use the "
            "processor's reciprocal-root estimate with a refinement step.",
        ]),
    "CrossProduct": dict(
        title="Cross product of 3-vectors",
        statuses=["NullPointer"],
        lines=[
            "dst0 = a1 b2 - a2 b1, dst1 = a2 b0 - a0 b2, dst2 = a0 b1 - a1 b0; no size check.",
            "32f Contiguous and List read all six inputs before the first store, so dst may "
            "be a source; other forms store each component as computed.",
        ]),
    "Trace": dict(
        title="Trace",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "The diagonal summed by ascending index, one result per object, adjacent.",
            "The 32f fixed sizes in Contiguous and List start from a00 (an all -0 diagonal "
            "gives -0); the others start from +0.",
        ]),
    "FrobNorm": dict(
        title="Frobenius norm",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "The root of the sum of squares from +0, row by row (arrays column by column). "
            "The packed 32f fixed sizes in Contiguous and List use a fixed tree of sums and "
            "the reciprocal-root estimate, so a zero or infinite sum gives NaN there.",
        ]),
    "Transpose": dict(
        title="Transposition",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "width and height are the source's; dst has width rows.",
            "The fixed square sizes may work in place (dst = src).",
        ]),
    "Copy": dict(
        title="Layout conversion of arrays",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "Arrays from one of the Strided (S), Pointer-strided (P) and List-strided (L) "
            "layouts to one of them, object after object; the suffix names the source's "
            "letter first. Only top-level pointers are checked, never an entry.",
        ]),
    "Extract": dict(
        title="Gathering into a dense buffer",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "Any operand in a strided, pointer or list layout into one dense buffer, object "
            "after object, row after row. No entry is tested.",
            "`mT _P` takes the stored matrix's width and height, `maT _PS2` does not "
            "transpose: kept as they are for the callers that rely on them.",
        ]),
    "LoadIdentity": dict(
        title="Identity matrices",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "Zeros with 1.0 on a running diagonal: object k, row i has its 1.0 at column "
            "k*height + i, so the rows must reach that far.",
        ]),
    "Det": dict(
        title="Determinants",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "Any size: Gaussian elimination with partial pivoting in the caller's scratch "
            "(size*size + size elements); a pivot below the threshold makes that "
            "determinant 0.0 and the call goes on.",
            "Fixed sizes: closed forms by minors of the bottom rows, every sum left to "
            "right; Contiguous and List run on the x87 unit (the `a6_` kernels).",
        ]),
    "Invert": dict(
        title="Inversion",
        statuses=["BadSize", "NullPointer", "ZeroDivide"],
        lines=[
            "Any size: the adjugate. The determinant by the elimination of Det, then every "
            "cofactor by an elimination of its own on rows copied afresh from src, in the "
            "caller's scratch; dst[j][i] = (minor * (1.0 / det)) * sign. A determinant that "
            "comes out 0.0 fails the object with -10, its dst untouched.",
            "Fixed sizes: 32f packed (Contiguous and List) test only d == 0.0 and take the "
            "reciprocal estimate with one Newton step; 32f scalar fails on |d| < 1e-07 and "
            "64f on |d| < 1e-15 and divide once. 5x5 and 6x6 outside the packed forms use "
            "the 2+3 and 3+3 partitions.",
            "On failure: the 4x4 scalar and 64f forms leave the unscaled adjugate in dst; "
            "the packed 5x5 and 6x6 leave dst partly written; the other forms write nothing.",
            "Packed results hold the processor's reciprocal estimate, so their last bits "
            "may differ between processors.",
        ]),
    "CholeskyDecomp": dict(
        title="Cholesky decomposition",
        statuses=["BadSize", "NullPointer", "NotPositiveDefinite"],
        lines=[
            "A = L L' into the library's factor form: L strictly below the diagonal, 1/L[i][i] "
            "on it. Only the lower triangle is read and written.",
            "A pivot not greater than zero stops with -179, rows above complete.",
            "dst may be src.",
        ]),
    "CholeskyBackSubst": dict(
        title="Solving with Cholesky factors",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "L y = b, then L' x = y, only multiplying (the factor holds reciprocals); no "
            "element is tested. dst may be src2.",
        ]),
    "QRDecomp": dict(
        title="QR decomposition",
        statuses=["BadSize", "NullPointer", "ZeroDivide"],
        lines=[
            "Householder reflections on a copy in dst (square or tall, height >= width): R on "
            "and above the diagonal, the reflector tails below; scratch holds `height` "
            "elements. dst may be src.",
        ]),
    "QRBackSubst": dict(
        title="Solving with QR factors",
        statuses=["BadSize", "NullPointer"],
        lines=[
            "The reflectors applied to a copy of b in scratch, then R solved from the bottom "
            "(least squares when tall). Nothing is tested. dst may be src2.",
        ]),
}

STATUS_TEXT = {
    "BadSize": "-6 `vorxStatusBadSize` (`vorx::status::bad_size`)",
    "NullPointer": "-8 `vorxStatusNullPointer` (`vorx::status::null_pointer`)",
    "ZeroDivide": "-10 `vorxStatusZeroDivide` (`vorx::status::zero_divide`)",
    "NotPositiveDefinite": "-179 `vorxStatusNotPositiveDefinite` (`vorx::status::not_positive_definite`)",
}
