# What makes a fault of ours harder to use: checked copies into buffers of known size, guarded stack frames, pages touched
# one by one as the stack grows, tables of addresses that are read-only once the program runs, an address of its own at
# every start, and jumps that only go where a function begins. scripts/check-hardening looks whether the installed files
# have it. Sanitizers bring checks of their own in place of the first.
if(NOT APPLE)
  include(CheckCXXCompilerFlag)
  include(CheckPIESupported)
  check_pie_supported()

  set(hardening -fstack-protector-strong -fstack-clash-protection -Wformat -Wformat-security)
  check_cxx_compiler_flag(-fcf-protection=full VELMORA_HAS_CF_PROTECTION) # x86
  check_cxx_compiler_flag(-mbranch-protection=standard VELMORA_HAS_BRANCH_PROTECTION) # ARM
  if(VELMORA_HAS_CF_PROTECTION)
    list(APPEND hardening -fcf-protection=full)
  elseif(VELMORA_HAS_BRANCH_PROTECTION)
    list(APPEND hardening -mbranch-protection=standard)
  endif()
  if(NOT VELMORA_SANITIZE) # needs optimisation
    list(APPEND hardening $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
  endif()
  add_compile_options(${hardening})
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endif()
