# cpack makes a Debian package of each installed component, following Debian's way of splitting a library.
# scripts/check-packages makes and tests them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qzanno)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL)

set(QZANNO_PACKAGE_MAINTAINER "The QzAnno maintainers <maintainers@qzanno.invalid>" CACHE STRING "The maintainer named in packages")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${QZANNO_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

# qz_package(COMPONENT NAME name SECTION section SUMMARY line TEXT text [DEPENDS package...] [RECOMMENDS package...]
# [LIBRARY soname version]). Dependencies on system packages are found from the files. LIBRARY: the package has a shared
# library that other packages link, with its name and the part of its SONAME after ".so.".
function(qz_package component)
  cmake_parse_arguments(package "" "NAME;SECTION;SUMMARY;TEXT" "DEPENDS;RECOMMENDS;LIBRARY" ${ARGN})
  string(TOUPPER ${component} upper)
  list(JOIN package_DEPENDS ", " depends)
  list(JOIN package_RECOMMENDS ", " recommends)
  set(settings
    PACKAGE_NAME ${package_NAME} PACKAGE_SECTION ${package_SECTION} PACKAGE_DEPENDS "${depends}" PACKAGE_RECOMMENDS "${recommends}"
    DESCRIPTION "${package_SUMMARY}\n${package_TEXT}" PACKAGE_SHLIBDEPS ON)
  if(package_LIBRARY)
    set(folder ${PROJECT_BINARY_DIR}/debian/${package_NAME})
    list(JOIN package_LIBRARY " " library)
    file(WRITE ${folder}/shlibs "${library} ${package_NAME} (>= ${PROJECT_VERSION})\n")
    file(WRITE ${folder}/triggers "activate-noawait ldconfig\n")
    set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${folder}/shlibs;${folder}/triggers" PARENT_SCOPE)
  endif()
  while(settings)
    list(POP_FRONT settings name)
    list(POP_FRONT settings value)
    set(CPACK_DEBIAN_${upper}_${name} "${value}" PARENT_SCOPE)
  endwhile()
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
endfunction()

set(libraries_folders $<TARGET_FILE_DIR:QzAnno> $<TARGET_FILE_DIR:QzAnnoC>)
string(CONCAT about
  "QzAnno turns annotated texts into titles and captions for video frames:\n"
  "palettes resolve named annotations to fonts, colours, layers and boxes, texts\n"
  "of every script are laid out on a screen and drawn into RGBA bitmaps.\n")

set(soversion ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
qz_package(core NAME libqzanno${soversion} SECTION libs LIBRARY libQzAnno ${soversion}
  SUMMARY "annotated titles and captions for video, C++ library" TEXT "${about}")
qz_package(c NAME libqzanno-c${QZANNO_C_SOVERSION} SECTION libs LIBRARY libqzanno-c ${QZANNO_C_SOVERSION} DEPENDS "libqzanno${soversion} ${same_version}"
  SUMMARY "annotated titles and captions for video, C library" TEXT "${about}This package holds the library of C functions.")
qz_package(dev NAME libqzanno-dev SECTION libdevel
  DEPENDS "libqzanno${soversion} ${same_version}" "libqzanno-c${QZANNO_C_SOVERSION} ${same_version}"
  RECOMMENDS libcairo2-dev libdeflate-dev libexpat1-dev libfontconfig-dev libfreetype-dev libharfbuzz-dev libicu-dev libpng-dev
  SUMMARY "annotated titles and captions for video, development files"
  TEXT "${about}This package holds the headers of the C++ and the C library, the static\nlibrary, and what CMake and pkg-config read. The recommended packages are for\nprograms that link the static library.")
if(QZANNO_COMMAND_LINE)
  qz_package(tools NAME qzanno SECTION video DEPENDS "libqzanno${soversion} ${same_version}"
    SUMMARY "renders annotated titles and captions for video" TEXT "${about}This package holds the command line qzanno, its man page, and completion\nfor bash, zsh and fish.")
endif()
if(TARGET QzAnnoUI)
  list(APPEND libraries_folders $<TARGET_FILE_DIR:QzAnnoUI>)
  qz_package(ui NAME libqzannoui${soversion} SECTION libs LIBRARY libQzAnnoUI ${soversion} DEPENDS "libqzanno${soversion} ${same_version}"
    SUMMARY "annotated titles and captions for video, desktop library"
    TEXT "${about}This package holds the annotation panel, the editor and the text view,\nover Qt 6.")
  qz_package(ui_dev NAME libqzannoui-dev SECTION libdevel
    DEPENDS "libqzannoui${soversion} ${same_version}" "libqzanno-dev ${same_version}" RECOMMENDS qt6-base-dev
    SUMMARY "annotated titles and captions for video, desktop development files"
    TEXT "${about}This package holds the headers of the desktop library.")
  qz_package(composer NAME qzanno-composer SECTION video DEPENDS "libqzannoui${soversion} ${same_version}" "libqzanno${soversion} ${same_version}"
    SUMMARY "styles annotated titles for video on the desktop" TEXT "${about}This package holds the desktop program.")
endif()
if(TARGET QzAnnoPython)
  get_property(python DIRECTORY bindings/python PROPERTY QZANNO_PYTHON_DEPENDS)
  qz_package(python NAME python3-qzanno SECTION python
    DEPENDS ${python} python3-numpy "libqzanno-c${QZANNO_C_SOVERSION} ${same_version}"
    SUMMARY "annotated titles and captions for video, Python 3 module" TEXT "${about}This package holds the Python module, which draws into NumPy arrays.")
endif()

# Read by cpack: where to find the packages' libraries when determining dependencies.
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/PackageLibraries.cmake
  CONTENT "set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${libraries_folders})\n# Each package has a summary of its own.\nset(CPACK_PACKAGE_DESCRIPTION_SUMMARY \"\")\n")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/PackageLibraries.cmake)
include(CPack)
