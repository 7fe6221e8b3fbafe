# Read by cpack before packing: adds what Debian requires of every package. Compresses man pages and changelogs
# reproducibly.
set(source ${CMAKE_CURRENT_LIST_DIR}/..)

# The licence, with a blank before each line and a full stop on empty lines.
file(READ ${source}/LICENSE licence)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)\n\n(.*)" _ "${licence}")
set(holders "${CMAKE_MATCH_1}")
string(REGEX REPLACE "([^\n]+)\n" " \\1\n" terms "${CMAKE_MATCH_2}")
string(REPLACE "\n\n" "\n .\n" terms "${terms}")
string(CONCAT copyright
  "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
  "Upstream-Name: QzAnno\n\n"
  "Files: *\nCopyright: ${holders}\nLicense: Expat\n${terms}")

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
string(CONCAT changelog
  "qzanno (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
  "  * Packages of QzAnno ${CPACK_PACKAGE_VERSION}; its own changelog lies beside this one.\n\n"
  " -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}\n")

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} upper)
  set(folder ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  file(WRITE ${folder}/copyright "${copyright}")
  file(WRITE ${folder}/changelog.Debian "${changelog}")
  configure_file(${source}/CHANGELOG.md ${folder}/changelog COPYONLY)
endforeach()

file(GLOB_RECURSE files ${CPACK_TEMPORARY_DIRECTORY}/*.1 ${CPACK_TEMPORARY_DIRECTORY}/changelog*)
list(FILTER files INCLUDE REGEX "/man1/|/doc/")
execute_process(COMMAND gzip -9n ${files} COMMAND_ERROR_IS_FATAL ANY)
