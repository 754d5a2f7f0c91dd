# Fails unless LIBRARY exports exactly the converter's entry points.
set(expected EndSpecialHalden InitSpecialHalden SpecialHaldenFaults SpecialHaldenLeaveReading
             WriteKTActorFile WriteKTMotionFile)
execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
                OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${output}")
set(found)
foreach(line IN LISTS lines)
    string(REGEX REPLACE " .*" "" name "${line}")
    list(APPEND found ${name})
endforeach()
list(SORT found)
if(NOT "${found}" STREQUAL "${expected}")
    message(FATAL_ERROR "${LIBRARY} exports ${found}, expected ${expected}")
endif()
