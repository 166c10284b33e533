# Header-only libraries of the machine that builds: found there, and looked at behind the target's
# own headers, which have the same names as the machine's.
list(APPEND CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES /usr/include)
add_compile_options("SHELL:-idirafter /usr/include")
