# Compares the symbols that the module defines for others with the list of its entries.
set(expected
    KLInitialize_filemanip
    KLTerminate_filemanip
    bnFullDeleteFcn
    bnFullDirFcn
    bnFullRecycleFcn
    bnFullWhatFcn
    bnIsFileFcn
    bnIsFolderFcn
    copyFile
    fileAttrib
    makeDir
    moveFile
    removeDir)

execute_process(COMMAND "${NM}" --dynamic --defined-only --format=posix "${LIBRARY}"
                OUTPUT_VARIABLE output RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${NM} cannot read ${LIBRARY}")
endif()
string(REGEX MATCHALL "[^\n]+" lines "${output}")
set(found)
foreach(line IN LISTS lines)
    string(REGEX REPLACE " .*" "" symbol "${line}")
    list(APPEND found "${symbol}")
endforeach()
list(SORT found)
list(SORT expected)
if(NOT found STREQUAL expected)
    message(FATAL_ERROR "The module exports\n  ${found}\ninstead of\n  ${expected}")
endif()
message(STATUS "The module exports its thirteen entries and nothing else.")
