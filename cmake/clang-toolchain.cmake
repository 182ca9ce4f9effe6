# The checking build under clang: AddressSanitizer, UndefinedBehaviorSanitizer and
# the fuzzer's coverage in one library, natively on x86_64 (clang builds no x86_64
# code without SSE2, so this build keeps its default instruction set; the library's
# 64f work is written for the x87 unit explicitly and runs there all the same).
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
