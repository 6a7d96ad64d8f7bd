# Run with cmake -P: install, then build and run the consumer both ways.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "failed: ${ARGN}\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${PREFIX}" "${WORK}")
run(${CMAKE_COMMAND} --install "${PROJECT_BINARY_DIR}" --prefix "${PREFIX}")

# find_package
run(${CMAKE_COMMAND} -S "${CONSUMER_SOURCE}" -B "${WORK}/cmake" -G Ninja -DCMAKE_PREFIX_PATH=${PREFIX}
    -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build "${WORK}/cmake")
run("${WORK}/cmake/consumer")
message(STATUS "find_package consumer: ${output}")

# pkg-config
set(ENV{PKG_CONFIG_PATH} "${PREFIX}/lib/pkgconfig:${PREFIX}/lib/x86_64-linux-gnu/pkgconfig")
run(pkg-config --cflags --libs zrbase)
string(STRIP "${output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
file(MAKE_DIRECTORY "${WORK}/pkgconfig")
run(${CXX} "${CONSUMER_SOURCE}/consumer.cpp" ${flags} -Wl,-rpath,${PREFIX}/lib -o "${WORK}/pkgconfig/consumer")
run("${WORK}/pkgconfig/consumer")
message(STATUS "pkg-config consumer: ${output}")
