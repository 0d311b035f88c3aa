# A build for a real unit: an SDK that has nothing but the signatures takes the place of platform/.
# The plug-in configures with it, has nothing of the bench in it, builds, links and, where this
# machine runs it, loads.
# cmake -DSOURCE_DIR=... -DWORK_DIR=... -DGENERATOR=... -DTOOLCHAIN=... -P platform_sdk.cmake

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})

# The SDK as one would come: headers, libraries, and the agent images of the receiver's vendor.
set(sdk ${WORK_DIR}/sdk)
file(COPY ${SOURCE_DIR}/tests/build/sdk/include DESTINATION ${sdk})
set(stubs ${WORK_DIR}/stubs)
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${SOURCE_DIR}/tests/build/sdk -B ${stubs}
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
run(${CMAKE_COMMAND} --build ${stubs})
file(COPY ${stubs}/libstubs.so DESTINATION ${sdk}/lib)
file(GLOB stand_ins ${SOURCE_DIR}/gnss_download/stand_in_agents/*.bin)
foreach(stand_in IN LISTS stand_ins)
  get_filename_component(name ${stand_in} NAME)
  file(SIZE ${stand_in} bytes)
  string(REPEAT "x" ${bytes} image)
  file(WRITE ${WORK_DIR}/agents/${name} "${image}")
endforeach()

set(build ${WORK_DIR}/build)
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${SOURCE_DIR} -B ${build}
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}
  -DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O0
  -DTESTMODE_PLATFORM_SDK=${sdk}
  -DTESTMODE_PLATFORM_LIBRARIES=stubs
  -DTESTMODE_AGENT_DIR=${WORK_DIR}/agents)
foreach(folder bench tests)
  if(EXISTS ${build}/${folder})
    message(FATAL_ERROR "a build for a real unit has ${folder}/ in it")
  endif()
endforeach()
run(${CMAKE_COMMAND} --build ${build} --target testmode)

# A plug-in for another processor is loaded where that is: script/arm-unit does it.
if(NOT TOOLCHAIN)
  run(${stubs}/load ${build}/lib/libtestmode.so)
endif()
