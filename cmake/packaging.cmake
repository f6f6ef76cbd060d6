# What `make install` and `make package` put where. Six components, a Debian package each: the programs (lexon), manual
# and examples (lexon-doc), the dialogs (lexon-gui), the library for other programs (liblexon0) and for who makes these
# (liblexon-dev), and the Python module (python3-lexon), which is left to `pip install .` outside of its package.
include(GNUInstallDirs)

set(LEXON_SITE "${PROJECT_SOURCE_DIR}/build/docs" CACHE PATH "The manual as a site; installed if it has been built")
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(LEXON_DOC ${CMAKE_INSTALL_DATAROOTDIR}/doc/lexon)

# The manual pages, compressed as Debian wants them.
function(lexon_man_pages component)
  foreach(page IN LISTS ARGN)
    string(REGEX REPLACE ".*\\." "" section ${page})
    set(packed ${CMAKE_BINARY_DIR}/man/${page}.gz)
    add_custom_command(OUTPUT ${packed}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/man
      COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/docs/man/${page} > ${packed}
      DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/${page} VERBATIM)
    list(APPEND all ${packed})
    install(FILES ${packed} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
  endforeach()
  add_custom_target(man_pages_of_${component} ALL DEPENDS ${all})
endfunction()

# What every package says of itself: its licence and what has changed.
string(TIMESTAMP LEXON_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(READ ${PROJECT_SOURCE_DIR}/LICENSE LEXON_LICENCE)
string(REGEX REPLACE "\n\n" "\n.\n" LEXON_LICENCE "${LEXON_LICENCE}")
string(REGEX REPLACE "\n([^\n])" "\n \\1" LEXON_LICENCE "${LEXON_LICENCE}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/copyright.in ${CMAKE_BINARY_DIR}/packaging/copyright @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/cmake/changelog.in ${CMAKE_BINARY_DIR}/packaging/changelog @ONLY)
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/packaging/changelog.gz
  COMMAND gzip -9nc ${CMAKE_BINARY_DIR}/packaging/changelog > ${CMAKE_BINARY_DIR}/packaging/changelog.gz
  DEPENDS ${CMAKE_BINARY_DIR}/packaging/changelog VERBATIM)
add_custom_target(packed_changelog ALL DEPENDS ${CMAKE_BINARY_DIR}/packaging/changelog.gz)

function(lexon_package_papers package component)
  install(FILES ${CMAKE_BINARY_DIR}/packaging/copyright ${CMAKE_BINARY_DIR}/packaging/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component})
endfunction()

# ---- lexon
lexon_package_papers(lexon lexon)
lexon_man_pages(lexon lexon.1 lexon-dict.1 lexon-import.1 lexon-lab.1 lexon-dictionary.5 lexon-graph.5 lexon-rules.5)
# Completions for the shells, from what the programs say of themselves.
find_package(Python3 QUIET COMPONENTS Interpreter)
if(TARGET lexon AND Python3_FOUND AND NOT CMAKE_CROSSCOMPILING)
  set(programs lexon lexon-dict lexon-import lexon-lab)
  set(completions ${CMAKE_BINARY_DIR}/completions)
  add_custom_command(OUTPUT ${completions}/bash/lexon
    COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tools/completions ${completions}
      $<TARGET_FILE:lexon> $<TARGET_FILE:lexon-dict> $<TARGET_FILE:lexon-import> $<TARGET_FILE:lexon-lab>
    DEPENDS ${programs} ${PROJECT_SOURCE_DIR}/tools/completions VERBATIM)
  add_custom_target(completions ALL DEPENDS ${completions}/bash/lexon)
  install(DIRECTORY ${completions}/bash/ DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions
    COMPONENT lexon)
  install(DIRECTORY ${completions}/zsh/ DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/vendor-completions COMPONENT lexon)
  install(DIRECTORY ${completions}/fish/ DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d
    COMPONENT lexon)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/cmake/lexon-mime.xml DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/mime/packages
  RENAME lexon.xml COMPONENT lexon)

# ---- lexon-doc
lexon_package_papers(lexon-doc doc)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/lexon.doc-base DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc-base
  RENAME lexon COMPONENT doc)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${LEXON_DOC} COMPONENT doc
  PATTERN "*.dic" EXCLUDE PATTERN "*.idx" EXCLUDE PATTERN "*.rul" EXCLUDE PATTERN "*.mtx" EXCLUDE
  PATTERN "*.out" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${LEXON_DOC}/manual COMPONENT doc
  PATTERN "man" EXCLUDE PATTERN "diagrams" EXCLUDE)
install(DIRECTORY ${LEXON_SITE}/ DESTINATION ${LEXON_DOC}/html COMPONENT doc OPTIONAL
  PATTERN "sitemap.xml*" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/editors/vscode DESTINATION ${LEXON_DOC}/editors COMPONENT doc
  PATTERN "test" EXCLUDE PATTERN "node_modules" EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${LEXON_DOC} COMPONENT doc)

# ---- liblexon0, liblexon-dev
lexon_package_papers(liblexon${LEXON_SOVERSION} library)
lexon_package_papers(liblexon-dev development)
install(TARGETS lexon_core lexon_shared EXPORT LexonTargets
  ARCHIVE COMPONENT development
  LIBRARY COMPONENT library NAMELINK_COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/lexon DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
set(LEXON_CMAKE ${CMAKE_INSTALL_LIBDIR}/cmake/Lexon)
include(CMakePackageConfigHelpers)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/LexonConfig.cmake.in
  ${CMAKE_BINARY_DIR}/packaging/LexonConfig.cmake INSTALL_DESTINATION ${LEXON_CMAKE})
# Before 1.0 a minor version may break what was there.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/packaging/LexonConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/packaging/LexonConfig.cmake ${CMAKE_BINARY_DIR}/packaging/LexonConfigVersion.cmake
  DESTINATION ${LEXON_CMAKE} COMPONENT development)
install(EXPORT LexonTargets NAMESPACE Lexon:: DESTINATION ${LEXON_CMAKE} COMPONENT development)
file(RELATIVE_PATH LEXON_UP /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/lexon.pc.in ${CMAKE_BINARY_DIR}/packaging/lexon.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/packaging/lexon.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

# ---- python3-lexon, where it is built
if(TARGET lexon_python)
  lexon_package_papers(python3-lexon python)
  lexon_man_pages(python lexon-cluster.1)
endif()

# ---- lexon-gui, where it is built
if(TARGET lexon-gui)
  lexon_package_papers(lexon-gui lexon-gui)
  lexon_man_pages(lexon-gui lexon-gui.1)
endif()

# ---- the packages
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lexon)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "rule-driven natural-language generator")
set(CPACK_PACKAGE_VENDOR "The Lexon authors")
set(CPACK_PACKAGE_CONTACT "${LEXON_MAINTAINER}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL lexon doc library development)
if(TARGET lexon_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
if(TARGET lexon-gui)
  list(APPEND CPACK_COMPONENTS_ALL lexon-gui)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_LEXON_PACKAGE_NAME lexon)
set(CPACK_DEBIAN_LEXON_PACKAGE_SECTION text)
set(CPACK_COMPONENT_LEXON_DESCRIPTION "Lexon writes sentences from graphs of meaning, by a dictionary and a file of
rules that a linguist supplies. This package has the console program, the
dictionary tool and the workbench.")
set(CPACK_DEBIAN_LEXON_PACKAGE_RECOMMENDS graphviz)
set(CPACK_DEBIAN_LEXON_PACKAGE_SUGGESTS lexon-doc)

set(CPACK_DEBIAN_DOC_PACKAGE_NAME lexon-doc)
set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOC_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DOC_DESCRIPTION "Lexon writes sentences from graphs of meaning. This package has the manual and
example languages to copy from.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liblexon-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Lexon writes sentences from graphs of meaning. This package has the
headers and the static library, to make programs that render themselves.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "liblexon${LEXON_SOVERSION} (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME liblexon${LEXON_SOVERSION})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
# The scripts that are named are not there, and so CPack adds none of its own that call ldconfig, which the trigger does.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_BINARY_DIR}/packaging/triggers
  ${CMAKE_BINARY_DIR}/packaging/shlibs ${CMAKE_BINARY_DIR}/none/postinst ${CMAKE_BINARY_DIR}/none/postrm)
file(WRITE ${CMAKE_BINARY_DIR}/packaging/triggers "activate-noawait ldconfig\n")
file(WRITE ${CMAKE_BINARY_DIR}/packaging/shlibs
  "liblexon ${LEXON_SOVERSION} liblexon${LEXON_SOVERSION} (>= ${PROJECT_VERSION})\n")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "Lexon writes sentences from graphs of meaning. This package has the library
that programs use to render themselves.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-lexon)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-distributed, python3-zstandard")
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}), \
python3 (<< ${Python_VERSION_MAJOR}.${LEXON_NEXT_PYTHON})")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Lexon writes sentences from graphs of meaning. This package has it as a module
for Python.")

set(CPACK_DEBIAN_LEXON-GUI_PACKAGE_NAME lexon-gui)
set(CPACK_DEBIAN_LEXON-GUI_PACKAGE_SECTION text)
set(CPACK_DEBIAN_LEXON-GUI_PACKAGE_RECOMMENDS lexon)
set(CPACK_COMPONENT_LEXON-GUI_DESCRIPTION "Lexon writes sentences from graphs of meaning, by a dictionary and a file of
rules that a linguist supplies. This package has the dialogs to start a run
from and to watch it.")
# The archives are as old as the source too.
file(WRITE ${CMAKE_BINARY_DIR}/packaging/date.cmake "set(ENV{SOURCE_DATE_EPOCH} \"$ENV{SOURCE_DATE_EPOCH}\")\n")
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_BINARY_DIR}/packaging/date.cmake)
include(CPack)
