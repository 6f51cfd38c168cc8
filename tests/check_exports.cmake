# Compares the dynamic symbols the shared library defines with the checked-in
# list, so that nothing is exported by accident and nothing goes missing.
# Usage: cmake -DLIB=<libqmrgen.so> -DEXPECTED=<list> -P check_exports.cmake
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND nm -D --defined-only ${LIB} OUTPUT_VARIABLE raw RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIB}")
endif()
string(REGEX REPLACE "[^\n]* [A-Za-z] ([^\n]+)" "\\1" names "${raw}")
string(REPLACE "\n" ";" actual "${names}")
list(FILTER actual EXCLUDE REGEX "^$")
# Sanitizer builds add their own bookkeeping symbols and type information.
list(FILTER actual EXCLUDE REGEX "^(__(odr_asan|asan|ubsan|lsan)|_ZT[IS])")
# Unoptimised builds keep out-of-line copies of standard-library templates,
# which carry their own default visibility (and so do their local statics).
list(FILTER actual EXCLUDE REGEX "^_ZZ?N?K?St")
list(SORT actual)
file(STRINGS ${EXPECTED} expected)
list(SORT expected)
set(extra ${actual})
list(REMOVE_ITEM extra ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${actual})
if(extra OR missing)
  message(FATAL_ERROR "exported symbols differ from ${EXPECTED}\n  not in the list: ${extra}\n  missing: ${missing}")
endif()
list(LENGTH actual count)
message(STATUS "${count} exported symbols match the list")
