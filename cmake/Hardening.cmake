# A fault that slips through shall end the program, not serve an attacker: bounds of containers and of C's copying functions are
# checked, stack frames are guarded, programs load anywhere, and the tables of the linker are read-only once filled. For what is
# installed; the sanitizers of the other presets see more.
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
