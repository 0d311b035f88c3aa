# Writes one sample image: -DFILE=path -DBYTES=size. Numbered lines of text, so that a dump of a
# flash tells which image lies there, and a block that is missing, doubled or moved shows.
get_filename_component(name ${FILE} NAME)
string(LENGTH ${name} name_length)
math(EXPR blanks "20 - ${name_length}")
string(REPEAT " " ${blanks} padding)

math(EXPR last "${BYTES} / 64")
set(text "")
foreach(line RANGE ${last})
  math(EXPR number "100000 + ${line}")
  string(APPEND text "${name}${padding} ${number} sample, no program for any receiver\n")
endforeach()
string(SUBSTRING "${text}" 0 ${BYTES} text)
file(WRITE ${FILE} "${text}")
