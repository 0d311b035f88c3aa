# Configurations that must stop, each with a message that tells what is wrong:
# cmake -DSOURCE_DIR=... -DWORK_DIR=... -DGENERATOR=... -DTOOLCHAIN=... -P agent_configurations.cmake

set(stand_ins ${SOURCE_DIR}/gnss_download/stand_in_agents)

# Configures in a fresh folder; wants a failure whose message holds every one of the texts.
function(expect_stop name arguments)
  file(REMOVE_RECURSE ${WORK_DIR}/${name}-build)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -G ${GENERATOR} -S ${SOURCE_DIR} -B ${WORK_DIR}/${name}-build
      -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} ${arguments}
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  # The messages are wrapped and indented.
  string(REGEX REPLACE "[ \n]+" " " output "${output}")
  if(status EQUAL 0)
    message(SEND_ERROR "${name}: the configuration went through")
  endif()
  foreach(text IN LISTS ARGN)
    string(FIND "${output}" "${text}" at)
    if(at EQUAL -1)
      message(SEND_ERROR "${name}: '${text}' is not in: ${output}")
    endif()
  endforeach()
  message(STATUS "${name}: stopped as it should")
endfunction()

# A folder with images that are no stand-ins, of the right sizes.
function(make_images folder)
  file(REMOVE_RECURSE ${folder})
  string(REPEAT "x" 2458 stage1)
  string(REPEAT "x" 39148 stage2)
  string(REPEAT "x" 27103 slave)
  file(WRITE ${folder}/da_array.bin "${stage1}")
  file(WRITE ${folder}/da_array1.bin "${stage2}")
  file(WRITE ${folder}/slave_da_array.bin "${slave}")
endfunction()

set(missing ${WORK_DIR}/missing)
make_images(${missing})
file(REMOVE ${missing}/da_array1.bin)
expect_stop(missing "-DTESTMODE_AGENT_DIR=${missing}"
  "${missing}/da_array1.bin is missing" "size found: none" "size wanted: 39148 bytes")

set(short ${WORK_DIR}/short)
make_images(${short})
string(REPEAT "x" 2457 stage1)
file(WRITE ${short}/da_array.bin "${stage1}")
expect_stop(short "-DTESTMODE_AGENT_DIR=${short}"
  "${short}/da_array.bin" "size found: 2457 bytes" "size wanted: 2458 bytes")

set(long ${WORK_DIR}/long)
make_images(${long})
file(APPEND ${long}/slave_da_array.bin "x")
expect_stop(long "-DTESTMODE_AGENT_DIR=${long}"
  "${long}/slave_da_array.bin" "size found: 27104 bytes" "size wanted: 27103 bytes")

set(sdk ${WORK_DIR}/sdk)
file(MAKE_DIRECTORY ${sdk})
expect_stop(sdk_alone "-DTESTMODE_PLATFORM_SDK=${sdk}"
  "a build for a real unit needs TESTMODE_AGENT_DIR")
expect_stop(sdk_default "-DTESTMODE_PLATFORM_SDK=${sdk};-DTESTMODE_AGENT_DIR=${stand_ins}"
  "a build for a real unit needs TESTMODE_AGENT_DIR")

# A stand-in is told by its text, wherever it lies.
set(copied ${WORK_DIR}/copied)
make_images(${copied})
file(COPY ${stand_ins}/slave_da_array.bin DESTINATION ${copied})
expect_stop(sdk_stand_in "-DTESTMODE_PLATFORM_SDK=${sdk};-DTESTMODE_AGENT_DIR=${copied}"
  "${copied}/slave_da_array.bin is a stand-in")
