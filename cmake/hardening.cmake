# What makes a fault in the handling of bad input end a program rather than steer it: canaries on the stack, bounds of memory
# whose size the compiler knows, and tables of the loader that can't be written once a program runs.  Sanitizers check more.
if(BISEAM_SANITIZED)
  return()
endif()

add_compile_options(-fstack-protector-strong)
add_link_options(LINKER:-z,relro,-z,now)
# It needs optimisation.  Some compilers define it by themselves; a level that was asked for stays.
if(NOT "${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS}" MATCHES "_FORTIFY_SOURCE")
  add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()
