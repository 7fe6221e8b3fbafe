# A fault that escapes testing should end the program, not help an attacker: container bounds and C's copying functions
# are checked, stack frames are guarded, programs are position-independent, and the linker's tables are read-only once
# filled. For installed code; the sanitizers of other presets detect more.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

if(QZANNO_HARDEN AND CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND NOT QZANNO_SANITIZE)
  set(installed $<CONFIG:Release,MinSizeRel>)
  add_compile_options($<${installed}:-fstack-protector-strong> $<${installed}:-U_FORTIFY_SOURCE>
    $<${installed}:-D_FORTIFY_SOURCE=2> $<${installed}:-D_GLIBCXX_ASSERTIONS>)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    add_link_options($<${installed}:LINKER:-z,relro,-z,now,-z,noexecstack>)
  endif()
endif()
