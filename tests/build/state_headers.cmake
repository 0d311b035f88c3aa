# A header of the unit's state is seen only by those who need it: -DBUILD_DIR=..., -DNINJA=...
# Asks the build what each object was made of, and counts the objects that a change of the header
# makes anew.

set(most 25)
set(headers
  audiostate.h clockstate.h gnssstate.h settingsstate.h sky.h systemstate.h usbstate.h)

execute_process(COMMAND ${NINJA} -C ${BUILD_DIR} -t deps
  OUTPUT_VARIABLE deps RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "ninja does not tell what the objects are made of: ${status}")
endif()
string(REPLACE ";" "," deps "${deps}")
string(REPLACE "\n" ";" lines "${deps}")

set(object "")
foreach(line IN LISTS lines)
  if(line MATCHES "^([^ ]+): #deps .*\\((VALID|STALE)\\)")
    set(object "${CMAKE_MATCH_1}")
    # Newer releases of CMake tell of what moc reads too.
    if(CMAKE_MATCH_2 STREQUAL "STALE" OR NOT object MATCHES "\\.o$")
      set(object "") # of a target that is no more, or is to be built yet
    endif()
  elseif(object AND line MATCHES "/bench/unit/([a-z]+\\.h)$")
    list(APPEND users_${CMAKE_MATCH_1} "${object}")
  endif()
endforeach()

set(failures "")
foreach(header IN LISTS headers)
  list(LENGTH users_${header} count)
  message(STATUS "${header}: ${count} objects")
  if(count EQUAL 0)
    string(APPEND failures "nothing that was built knows ${header}\n")
  elseif(count GREATER most)
    list(JOIN users_${header} "\n  " users)
    string(APPEND failures "${header} makes ${count} objects anew, at most ${most} are wanted:\n  ${users}\n")
  endif()
endforeach()
if(failures)
  message(FATAL_ERROR "${failures}")
endif()
