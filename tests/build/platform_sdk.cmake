# A build for a real unit: configures with an SDK in place of platform/, has nothing of the bench
# in it, and compiles the source that includes the most of the SDK's headers, and those that need a
# value of an enumeration whose names are the SDK's own.
# cmake -DSOURCE_DIR=... -DWORK_DIR=... -DSERVICES=... -DTOOLCHAIN=... -P platform_sdk.cmake

file(REMOVE_RECURSE ${WORK_DIR})

# An SDK as one would come: headers, libraries, and the agent images of the receiver's vendor.
set(sdk ${WORK_DIR}/sdk)
file(COPY ${SOURCE_DIR}/platform/ DESTINATION ${sdk}/include PATTERN CMakeLists.txt EXCLUDE)
file(COPY ${SERVICES} DESTINATION ${sdk}/lib)
file(GLOB stand_ins ${SOURCE_DIR}/gnss_download/stand_in_agents/*.bin)
foreach(stand_in IN LISTS stand_ins)
  get_filename_component(name ${stand_in} NAME)
  file(SIZE ${stand_in} bytes)
  string(REPEAT "x" ${bytes} image)
  file(WRITE ${WORK_DIR}/agents/${name} "${image}")
endforeach()

# Of an enumeration only the values are known.
function(rename_enumerator header name)
  file(READ ${sdk}/include/${header} text)
  string(REPLACE ${name} SdkNameOf${name} renamed "${text}")
  if(renamed STREQUAL text)
    message(FATAL_ERROR "${header} has no ${name}")
  endif()
  file(WRITE ${sdk}/include/${header} "${renamed}")
endfunction()
rename_enumerator(framework/events.h TouchLeaveTestMode)
rename_enumerator(framework/events.h TaskIdle)
rename_enumerator(mcu/mcumanager.h GnssPackage)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${output}")
  endif()
endfunction()

set(build ${WORK_DIR}/build)
run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE_DIR} -B ${build}
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}
  -DTESTMODE_PLATFORM_SDK=${sdk}
  -DTESTMODE_PLATFORM_LIBRARIES=headunit_services
  -DTESTMODE_AGENT_DIR=${WORK_DIR}/agents)
foreach(folder bench tests)
  if(EXISTS ${build}/${folder})
    message(FATAL_ERROR "a build for a real unit has ${folder}/ in it")
  endif()
endforeach()
run(${CMAKE_COMMAND} --build ${build} --target
  CMakeFiles/testmode_objects.dir/plugin/mainwidget.cpp.o
  CMakeFiles/testmode_objects.dir/usb/appledevtest.cpp.o
  CMakeFiles/testmode_objects.dir/gps/gpsupdate.cpp.o)
