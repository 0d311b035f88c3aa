# Manual pages from the programs' own help, copyright and changelog, and the packages themselves.
find_program(HELP2MAN help2man REQUIRED)
find_program(GZIP gzip REQUIRED)

# manual(PROGRAM TITLE)
function(manual program title)
  set(page ${CMAKE_CURRENT_BINARY_DIR}/${program}.1)
  add_custom_command(OUTPUT ${page}.gz
    COMMAND ${HELP2MAN} --no-info --name=${title} --output=${page} $<TARGET_FILE:${program}>
    COMMAND ${GZIP} --best --no-name --force ${page}
    DEPENDS ${program} VERBATIM)
  add_custom_target(manual_${program} ALL DEPENDS ${page}.gz)
  install(FILES ${page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT bench)
endfunction()
manual(testmode-bench "simulated head unit and GNSS receiver")
manual(testmode-ctl "calls of a running testmode-bench")
manual(testmode-receiver "simulated GNSS receiver on a serial line")

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
# package(COMPONENT NAME SUMMARY DEPENDS)
function(package component name summary depends)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${key}_DESCRIPTION "${summary}" PARENT_SCOPE)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${name})
  configure_file(changelog.in ${name}/changelog @ONLY)
  add_custom_command(OUTPUT ${name}/changelog.gz
    COMMAND ${GZIP} --best --no-name --force --keep ${name}/changelog
    DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/${name}/changelog VERBATIM)
  add_custom_target(changelog_${component} ALL DEPENDS ${name}/changelog.gz)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}/changelog.gz copyright
    DESTINATION ${folder} COMPONENT ${component})
endfunction()

set(same "(= ${PROJECT_VERSION})")
package(plugin testmode-plugin
  "Test mode of a head unit\nThe plug-in that the unit's framework loads, linked with stand-in agents."
  "")
package(bench testmode-bench
  "Simulated head unit and GNSS receiver\nLoads the test mode's plug-in in a private root, where a person, a\nterminal or scripts drive it."
  "testmode-plugin ${same}, bubblewrap (>= 0.8.0), fonts-wqy-microhei, fonts-dejavu-core, libqt5sql5-sqlite")
package(dev testmode-dev
  "Headers and CMake package for a head unit's plug-ins\nThe contract with the unit's client libraries, and the bench's services\nto link against."
  "testmode-bench ${same}, qtbase5-dev")
package(python python3-testmode-bench
  "Drives the simulated head unit from Python and pytest\nA fresh unit for each test, and the evidence of those that fail."
  "testmode-bench ${same}, python3 (>= 3.11)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "python3-pytest, python3-pytest-xdist")
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own, the first line above
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL plugin bench dev python)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_PACKAGE_CONTACT "testmode developers <testmode@testmode.invalid>")
set(CPACK_STRIP_FILES ON)
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/packages)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
