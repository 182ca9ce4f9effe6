# The product build: 32-bit x86, SSE without SSE2, double on the x87 unit.
# Where this machine cannot run 32-bit programs, tests run under qemu-i386.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
# -march=i686 alone would also tune for that processor, which splits every unaligned
# 16-byte move into two 8-byte halves; on the processors that run the library now
# that makes the 4x4 product a quarter slower. -mtune=generic keeps the instruction
# set and tunes for them, as the native build is tuned.
set(VORX_TARGET_FLAGS "-m32 -march=i686 -mtune=generic -msse -mno-sse2 -mfpmath=sse")
# The i386 calling convention promises only a 4-byte aligned stack at a call, and
# much code that calls the library keeps no more: every exported entry (and the
# test adapters that call them) aligns its own frame where it spills SSE registers.
set(VORX_ENTRY_FLAGS "-mincoming-stack-boundary=2")
# The tests' adapters keep the stack as they find it (no alignment of their own for
# the calls they make), so that a test can enter a function with the stack off 16.
set(VORX_ADAPTER_FLAGS "-mpreferred-stack-boundary=2")
set(CMAKE_C_FLAGS_INIT "${VORX_TARGET_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${VORX_TARGET_FLAGS}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

if(NOT DEFINED VORX_RUNS_I386)
  set(_probe_dir "${CMAKE_BINARY_DIR}/i386-probe")
  file(MAKE_DIRECTORY "${_probe_dir}")
  file(WRITE "${_probe_dir}/probe.c" "int main(void) { return 0; }\n")
  execute_process(COMMAND gcc -m32 "${_probe_dir}/probe.c" -o "${_probe_dir}/probe"
                  RESULT_VARIABLE _built OUTPUT_QUIET ERROR_QUIET)
  set(_ran 1)
  if(_built EQUAL 0)
    execute_process(COMMAND "${_probe_dir}/probe" RESULT_VARIABLE _ran OUTPUT_QUIET ERROR_QUIET)
  endif()
  if(_ran EQUAL 0)
    set(VORX_RUNS_I386 ON CACHE BOOL "This machine runs 32-bit programs")
  else()
    set(VORX_RUNS_I386 OFF CACHE BOOL "This machine runs 32-bit programs")
  endif()
endif()
if(NOT VORX_RUNS_I386)
  find_program(VORX_QEMU_I386 qemu-i386 REQUIRED)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${VORX_QEMU_I386}")
endif()
