# The receiver's agents: three program images of its vendor, built into the
# plug-in. TESTMODE_AGENT_DIR holds them under these names, of exactly these sizes:
#
#   da_array.bin        2458 bytes  stage 1
#   da_array1.bin      39148 bytes  stage 2
#   slave_da_array.bin 27103 bytes  carried along, not sent
#
# The default folder holds stand-ins: readable text that the bench's receiver
# accepts and no real one would. A build for a real unit refuses them.
# Sets TESTMODE_AGENT_FILES to the three paths, and TESTMODE_STAND_INS to the default folder.

get_filename_component(TESTMODE_STAND_INS
  "${CMAKE_CURRENT_LIST_DIR}/../gnss_download/stand_in_agents" REALPATH)
set(TESTMODE_AGENT_DIR "${TESTMODE_STAND_INS}" CACHE PATH
    "Folder with the receiver's agent images: da_array.bin, da_array1.bin, slave_da_array.bin")

get_filename_component(agent_dir "${TESTMODE_AGENT_DIR}" REALPATH)
if(TESTMODE_PLATFORM_SDK AND agent_dir STREQUAL TESTMODE_STAND_INS)
  message(FATAL_ERROR "TESTMODE_PLATFORM_SDK is set: a build for a real unit needs "
    "TESTMODE_AGENT_DIR, the folder with the agent images of the receiver's vendor")
endif()

# Names and sizes, in pairs.
set(agent_images da_array.bin 2458 da_array1.bin 39148 slave_da_array.bin 27103)
set(TESTMODE_AGENT_FILES)
while(agent_images)
  list(POP_FRONT agent_images name wanted)
  set(path "${TESTMODE_AGENT_DIR}/${name}")
  if(NOT EXISTS "${path}" OR IS_DIRECTORY "${path}")
    message(FATAL_ERROR "Agent image ${path} is missing (TESTMODE_AGENT_DIR); "
      "size found: none, size wanted: ${wanted} bytes")
  endif()
  file(SIZE "${path}" found)
  if(NOT found EQUAL wanted)
    message(FATAL_ERROR "Agent image ${path} has the wrong size (TESTMODE_AGENT_DIR); "
      "size found: ${found} bytes, size wanted: ${wanted} bytes")
  endif()
  file(READ "${path}" start LIMIT 64 HEX)
  string(HEX "STAND-IN" mark)
  if(TESTMODE_PLATFORM_SDK AND start MATCHES "^${mark}")
    message(FATAL_ERROR "Agent image ${path} is a stand-in: TESTMODE_PLATFORM_SDK is set, and a "
      "build for a real unit needs the agent images of the receiver's vendor (TESTMODE_AGENT_DIR)")
  endif()
  list(APPEND TESTMODE_AGENT_FILES "${path}")
  # A file that changes is checked again before the next build.
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${path}")
endwhile()
