# What makes a fault of memory end a program at once, as Debian builds its own programs. It changes no result
# (tests/machines). Sanitizers and fuzzing bring their own.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection ZANDOR_HAS_CF_PROTECTION)
check_cxx_compiler_flag(-fstack-clash-protection ZANDOR_HAS_STACK_CLASH_PROTECTION)
target_compile_options(zandor_options INTERFACE
  -fPIE -fstack-protector-strong
  $<$<BOOL:${ZANDOR_HAS_STACK_CLASH_PROTECTION}>:-fstack-clash-protection>
  $<$<BOOL:${ZANDOR_HAS_CF_PROTECTION}>:-fcf-protection>
  # What is compiled without optimisation, and says so by this property, cannot have it.
  "$<$<AND:$<CONFIG:Release,RelWithDebInfo,MinSizeRel>,$<NOT:$<BOOL:$<TARGET_PROPERTY:ZANDOR_PLAIN>>>>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>")
target_link_options(zandor_options INTERFACE -Wl,-z,relro,-z,now $<$<NOT:$<BOOL:${ZANDOR_STATIC}>>:-pie>)

# A run of few atoms spends half of its time loading libraries: only that of C is loaded.
if(NOT ZANDOR_STATIC AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_link_options(zandor_options INTERFACE -static-libstdc++ -static-libgcc)
endif()
