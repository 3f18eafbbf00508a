# Installs a build as those who make packages do, below a staging folder, and then moves the tree: nothing in it may
# need to know where it lies.
#   cmake -DBUILD=... -DSTAGE=... -DTREE=... -P install_tree.cmake
file(REMOVE_RECURSE "${STAGE}" "${TREE}")
execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env "DESTDIR=${STAGE}" "${CMAKE_COMMAND}" --install "${BUILD}" --prefix /opt/korvex
    OUTPUT_QUIET
    COMMAND_ERROR_IS_FATAL ANY)
file(RENAME "${STAGE}/opt/korvex" "${TREE}")
file(REMOVE_RECURSE "${STAGE}")
