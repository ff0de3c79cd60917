# What makes a mistake in the programs harder to use; scripts/check-hardening looks for each of these in what is
# installed. Sanitizers bring checks of their own, and do not go with all of it.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()  # what is linked as position-independent is linked so by every compiler
add_compile_options(-fstack-protector-strong)
add_link_options(-Wl,-z,relro -Wl,-z,now)

# Of x86 alone.
check_cxx_compiler_flag(-fcf-protection SR_CF_PROTECTION)
if(SR_CF_PROTECTION)
  add_compile_options(-fcf-protection)
endif()

# Does nothing without optimisation. Some compilers define it themselves.
add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
