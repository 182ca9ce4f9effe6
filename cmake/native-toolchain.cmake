# The native build of the same sources: x86_64 with the product's instruction set
# (SSE without SSE2, so double runs on the x87 unit and gives the same bits).
set(VORX_TARGET_FLAGS "-msse -mno-sse2 -mfpmath=sse")
set(CMAKE_C_FLAGS_INIT "${VORX_TARGET_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${VORX_TARGET_FLAGS}")
