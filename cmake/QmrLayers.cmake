# One layer per source folder: its objects go into the shared library, and a
# static archive of the same objects links only the layers below it, so a call
# that crosses the layering upwards fails to link in that folder's tests.
find_package(Threads REQUIRED)

set(QMR_WARNINGS -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wundef)
if(QMR_WERROR)
  list(APPEND QMR_WARNINGS -Werror)
endif()

if(QMR_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# qmr_add_layer(NAME SOURCES ... DEPS ...)
function(qmr_add_layer name)
  cmake_parse_arguments(L "" "" "SOURCES;DEPS" ${ARGN})
  add_library(qmr_${name}_obj OBJECT ${L_SOURCES})
  target_include_directories(qmr_${name}_obj
    PUBLIC ${PROJECT_SOURCE_DIR}/include
    PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(qmr_${name}_obj PRIVATE ${QMR_WARNINGS} -fno-exceptions)
  target_compile_definitions(qmr_${name}_obj PRIVATE QMR_BUILDING_LIBRARY)
  if(QMR_TESTING)
    target_compile_definitions(qmr_${name}_obj PUBLIC QMR_TESTING)
  endif()
  add_library(qmr_${name} STATIC $<TARGET_OBJECTS:qmr_${name}_obj>)
  target_include_directories(qmr_${name} PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
  if(QMR_TESTING)
    target_compile_definitions(qmr_${name} PUBLIC QMR_TESTING)
  endif()
  target_link_libraries(qmr_${name} PUBLIC ${L_DEPS} Threads::Threads)
  set_property(GLOBAL APPEND PROPERTY QMR_LAYER_OBJECTS $<TARGET_OBJECTS:qmr_${name}_obj>)
endfunction()
