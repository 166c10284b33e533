# Functions of single precision as the renderer's C library rounds them. That of the WebAssembly system
# is as exact, but rounds some values the other way, which loops of feedback turn into differences of
# 1e-5. Newlib's, which Debian packages as sources, are the same to the bit.
enable_language(C)
file(GLOB archive /usr/src/newlib/newlib-*.tar.xz)
if(NOT archive)
    message(FATAL_ERROR "Newlib's sources are missing: install the package newlib-source")
endif()
set(unfolded ${CMAKE_CURRENT_BINARY_DIR}/newlib)
set(libm ${unfolded}/newlib-salsa/newlib/libm)
if(NOT EXISTS ${libm})
    file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION ${unfolded}
        PATTERNS */newlib/libm/* */newlib/libc/include/machine/ieeefp.h)
endif()
# Of its C library one header alone, so that all others are those of the WebAssembly system.
configure_file(${libm}/../libc/include/machine/ieeefp.h machine/ieeefp.h COPYONLY)

add_library(tesserae_math OBJECT
    ${libm}/math/sf_tan.c ${libm}/math/kf_tan.c ${libm}/math/ef_rem_pio2.c
    ${libm}/math/kf_rem_pio2.c ${libm}/math/sf_tanh.c ${libm}/common/sf_expm1.c
    ${libm}/math/ef_log10.c ${libm}/math/wf_log10.c)
target_include_directories(tesserae_math PRIVATE ${libm}/common ${CMAKE_CURRENT_BINARY_DIR})
target_compile_definitions(tesserae_math PRIVATE __IEEE_LITTLE_ENDIAN _IEEE_LIBM _CONST=const
    __int32_t=int __uint32_t=unsigned)
target_compile_options(tesserae_math PRIVATE -O2 -ffp-contract=off -fno-builtin -w)
