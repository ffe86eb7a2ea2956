# What is installed besides the programs, and the Debian package: the same files by
# `cmake --install` and by CPack.

set(VELTRUM_MAINTAINER "The veltrum developers <developers@veltrum.invalid>"
  CACHE STRING "Whom the Debian package names for questions, as Name <address>")

find_program(SCDOC scdoc)
find_program(GZIP gzip REQUIRED)

# veltrum_compressed(OUT COMMAND...): the command's output, compressed, as OUT.gz in the build folder.
function(veltrum_compressed out)
  cmake_parse_arguments(PARSE_ARGV 1 it "" "INPUT" "COMMAND")
  set(made ${PROJECT_BINARY_DIR}/documents/${out}.gz)
  add_custom_command(OUTPUT ${made} DEPENDS ${it_INPUT} VERBATIM
    COMMAND sh -c "in=$1 out=$2 gzip=$3; shift 3; \"$@\" <\"$in\" | \"$gzip\" -9n >\"$out\""
      sh ${it_INPUT} ${made} ${GZIP} ${it_COMMAND})
  set_property(GLOBAL APPEND PROPERTY VELTRUM_COMPRESSED ${made})
endfunction()

# Manual pages bear the version in their last line.
if(SCDOC)
  foreach(page veltrum veltrum-all veltrum-farm veltrum-view)
    configure_file(docs/man/${page}.1.scd documents/${page}.1.scd @ONLY)
    veltrum_compressed(${page}.1 INPUT ${PROJECT_BINARY_DIR}/documents/${page}.1.scd
      COMMAND ${SCDOC})
    install(FILES ${PROJECT_BINARY_DIR}/documents/${page}.1.gz
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  endforeach()
else()
  message(STATUS "Without scdoc there are no manual pages")
endif()

# Bash looks for a file of the name of the command.
set(completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/veltrum DESTINATION ${completions})
foreach(program veltrum-all veltrum-farm veltrum-view)
  file(CREATE_LINK veltrum ${PROJECT_BINARY_DIR}/documents/${program} SYMBOLIC)
  install(FILES ${PROJECT_BINARY_DIR}/documents/${program} DESTINATION ${completions})
endforeach()

set(documents ${CMAKE_INSTALL_DATADIR}/doc/veltrum)
file(READ LICENSE LICENSE)
string(STRIP "${LICENSE}" LICENSE)
string(REPLACE "\n\n" "\n.\n" LICENSE "${LICENSE}")
string(REPLACE "\n" "\n " LICENSE " ${LICENSE}")
configure_file(cmake/copyright.in documents/copyright @ONLY)
install(FILES README.md CHANGELOG.md ${PROJECT_BINARY_DIR}/documents/copyright
  DESTINATION ${documents})
install(DIRECTORY docs/ DESTINATION ${documents}/docs FILES_MATCHING PATTERN *.md PATTERN man EXCLUDE)
install(FILES samples/avatar.fbx samples/room.fbx DESTINATION ${documents}/examples)
install(DIRECTORY samples/textures DESTINATION ${documents}/examples)

# The changes of this version, which have to come first, in the form that Debian's tools read.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md LICENSE)
file(READ CHANGELOG.md changes)
string(REGEX REPLACE "^.*\n## ${PROJECT_VERSION}[^\n]*\n" "" section "${changes}")
string(REGEX MATCH "\n## ([0-9.]+)" first "${changes}")
if(NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR
    "CHANGELOG.md begins with version ${CMAKE_MATCH_1}, the project's is ${PROJECT_VERSION}")
endif()
string(REGEX REPLACE "\n+(## .*)?$" "" section "${section}")
string(REPLACE "\n  " "\n    " section "${section}")
string(REPLACE "\n- " "\n  * " section "${section}")
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${PROJECT_BINARY_DIR}/documents/changelog.new
  "veltrum (${PROJECT_VERSION}) unstable; urgency=medium\n${section}\n\n -- ${VELTRUM_MAINTAINER}  ${now}\n")
file(COPY_FILE ${PROJECT_BINARY_DIR}/documents/changelog.new
  ${PROJECT_BINARY_DIR}/documents/changelog ONLY_IF_DIFFERENT)
veltrum_compressed(changelog INPUT ${PROJECT_BINARY_DIR}/documents/changelog COMMAND cat)
install(FILES ${PROJECT_BINARY_DIR}/documents/changelog.gz DESTINATION ${documents})

get_property(compressed GLOBAL PROPERTY VELTRUM_COMPRESSED)
add_custom_target(documents ALL DEPENDS ${compressed})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME veltrum)
set(CPACK_PACKAGE_CONTACT "${VELTRUM_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "converter of FBX scenes into Cal3D files")
set(CPACK_PACKAGE_DESCRIPTION
"Reads FBX scenes, binary or text, and writes Cal3D skeletons, meshes,
materials, animations and morph animations for the content pipeline of an
avatar platform.
.
veltrum runs single listings and exports and prints records for the tools
that call it, veltrum-all writes everything of a scene with a manifest,
veltrum-farm converts thousands of scenes on many cores and machines, and
veltrum-view shows exported files in a browser.")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# veltrum-farm is a script on GNU parallel; other machines it reaches by ssh and rsync, and pictures are
# Chromium's.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "parallel, python3")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "openssh-client, rsync")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "bash-completion, chromium, www-browser")
include(CPack)
