# Run with cmake -DROOT=<source root> [-DSTAMP=<file>] -P: fails when a library source includes a header of a layer
# above its own or beside it. The layers, each using only those before it (one line a rank, folders of a rank are
# siblings and may not use each other):
#   host/foundation
#   host/system
#   host/audio
#   core
#   file
#   audio
#   dsp codec
#   automation formatters plugins
#   app
#   ui (the separate library zrbase-ui)
set(ZR_LAYER_RANKS
    "host/foundation=0" "host/system=1" "host/audio=2" "core=3" "file=4" "audio=5" "dsp=6" "codec=6"
    "automation=7" "formatters=7" "plugins=7" "app=8" "ui=9")

function(zr_layer_of path out_layer out_rank)
    set(${out_layer} "" PARENT_SCOPE)
    foreach(entry IN LISTS ZR_LAYER_RANKS)
        string(REPLACE "=" ";" pair "${entry}")
        list(GET pair 0 layer)
        list(GET pair 1 rank)
        if(path MATCHES "^${layer}/")
            set(${out_layer} "${layer}" PARENT_SCOPE)
            set(${out_rank} "${rank}" PARENT_SCOPE)
            return()
        endif()
    endforeach()
endfunction()

file(GLOB_RECURSE sources RELATIVE "${ROOT}/zrbase" "${ROOT}/zrbase/*.h" "${ROOT}/zrbase/*.cpp")
file(GLOB_RECURSE ui_sources RELATIVE "${ROOT}" "${ROOT}/zrbase-ui/*.h" "${ROOT}/zrbase-ui/*.cpp")
set(violations "")
foreach(source IN LISTS sources ui_sources)
    if(source MATCHES "^zrbase-ui/")
        set(path "${ROOT}/${source}")
        set(layer "ui")
        set(rank 9)
    else()
        set(path "${ROOT}/zrbase/${source}")
        zr_layer_of("${source}" layer rank)
        if(NOT layer)
            string(APPEND violations "  zrbase/${source} lies in no layer\n")
            continue()
        endif()
    endif()
    file(STRINGS "${path}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]zrbase/")
    foreach(line IN LISTS includes)
        string(REGEX REPLACE "^[^<\"]*[<\"]zrbase/([^>\"]+)[>\"].*$" "\\1" target "${line}")
        zr_layer_of("${target}" target_layer target_rank)
        if(NOT target_layer)
            string(APPEND violations "  ${source} includes zrbase/${target}, which lies in no layer\n")
        elseif(target_layer STREQUAL layer)
            continue()
        elseif(target_rank GREATER_EQUAL rank)
            string(APPEND violations "  ${source} (${layer}) includes zrbase/${target} (${target_layer})\n")
        endif()
    endforeach()
endforeach()

if(violations)
    message(FATAL_ERROR "Includes against the library's layers:\n${violations}")
endif()
if(STAMP)
    file(TOUCH "${STAMP}")
endif()
