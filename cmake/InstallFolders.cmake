# Where installed programs and libraries look for the libraries. In a separate prefix the tree may be moved; in the
# system's own folders no path is set, as Debian requires.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(QZANNO_LIBRARY_RPATH "")
  set(QZANNO_PROGRAM_RPATH "")
else()
  file(RELATIVE_PATH libraries_from_programs /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set(QZANNO_LIBRARY_RPATH "$ORIGIN")
  set(QZANNO_PROGRAM_RPATH "$ORIGIN/${libraries_from_programs}")
endif()
