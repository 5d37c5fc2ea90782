# Without a compiler cache (a machine that builds once: CI, a new user) the headers that most files share are parsed once for all
# of them, which takes a third off the whole build. With a cache they stay out: it would miss whenever the bundle changes.
function(zentrix_shared_headers name)
  if(NOT CCACHE_PROGRAM)
    cmake_parse_arguments(ARG "" "" "LINKS;HEADERS;OPTIONS" ${ARGN})
    file(WRITE ${CMAKE_BINARY_DIR}/${name}.cpp "")
    add_library(${name} OBJECT ${CMAKE_BINARY_DIR}/${name}.cpp)
    target_link_libraries(${name} PRIVATE zx_flags ${ARG_LINKS})
    target_compile_options(${name} PRIVATE ${ARG_OPTIONS})
    target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
  endif()
endfunction()
function(zentrix_reuse_headers target from)
  if(TARGET ${from})
    target_precompile_headers(${target} REUSE_FROM ${from})
  endif()
endfunction()

# zentrix_subsystem(NAME DEPENDS A B ...): the folder src/NAME becomes the library zx_NAME.
#
# A header is reached as "NAME/header.hpp" through a private include root that holds a link to this one folder only, so a
# source that includes a folder its row does not name fails to compile. Folders without sources are header-only.
# A file src/NAME/CMakeLists.txt, where there is one, adds what the rule cannot know (flags of kernel files, for instance).
function(zentrix_subsystem name)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  set(folder ${CMAKE_CURRENT_SOURCE_DIR}/src/${name})
  set(root ${CMAKE_BINARY_DIR}/include/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${folder} ${root}/${name} SYMBOLIC)

  file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp)
  if(sources)
    add_library(zx_${name} STATIC ${sources})
    set(scope PUBLIC)
    target_link_libraries(zx_${name} PRIVATE zx_flags)
    zentrix_reuse_headers(zx_${name} zx_shared_headers)
  else()
    add_library(zx_${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_include_directories(zx_${name} ${scope} ${root})
  foreach(dependency ${ARG_DEPENDS})
    target_link_libraries(zx_${name} ${scope} zx_${dependency})
  endforeach()
  if(name STREQUAL "report")
    target_link_libraries(zx_${name} ${scope} fmt::fmt OpenMP::OpenMP_CXX)
  elseif(name STREQUAL "linalg")
    # Eigen's products go to BLAS; its own threads stay off, OpenBLAS (OpenMP flavour) has them.
    target_compile_definitions(zx_${name} ${scope} EIGEN_USE_BLAS EIGEN_DONT_PARALLELIZE)
    target_link_libraries(zx_${name} ${scope} Eigen3::Eigen ${LAPACKE_LIBRARY} PkgConfig::OPENBLAS)
  endif()
  if(EXISTS ${folder}/CMakeLists.txt)
    include(${folder}/CMakeLists.txt)
  endif()
endfunction()

# zentrix_test(NAME SOURCES ... LINKS ...): a GoogleTest program; CTest knows each of its tests, labelled with NAME, and runs
# them with the data files of the source tree, whatever an installed program uses.
function(zentrix_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(test_${name} ${ARG_SOURCES})
  target_link_libraries(test_${name} PRIVATE ${ARG_LINKS} zx_flags zx_test_support GTest::gtest GTest::gmock GTest::gtest_main)
  target_compile_options(test_${name} PRIVATE ${zx_test_options})
  gtest_discover_tests(test_${name} WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${name}."
                       PROPERTIES LABELS ${name} ENVIRONMENT_MODIFICATION "ZENTRIX=unset:")
endfunction()
