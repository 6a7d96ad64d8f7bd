# Compiler settings shared by every target of the project.
add_compile_options(-Wall -Wextra -Wpedantic)
if(ZR_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
endif()
# Filters and measurements are specified by their evaluation order: no contraction into FMA, no fast-math.
add_compile_options(-ffp-contract=off -fno-fast-math)

if(ZR_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()

if(ZR_SANITIZE_THREAD)
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
endif()

if(ZR_BUILD_FUZZERS)
    # Coverage feedback for libFuzzer inside the library as well as in the targets.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
