# zentrix_kernels(NAME): the kernel files of a subsystem, src/NAME/kernels/*.cpp, are compiled once per instruction set, each
# into a namespace of its own (macro ZX_ISA), and chosen at run time (simd/isa.hpp). Value-changing maths flags stay out: no
# -ffast-math, infinities and NaNs are honest.
set(zx_kernel_flags -O3 -ffp-contract=fast -fno-math-errno -fno-trapping-math)
set(zx_isas baseline)
set(zx_flags_of_baseline "")
if(ZENTRIX_SANITIZE)
  set(zx_kernel_flags -O1 -fno-math-errno)
  # With all checks and line tables these templates would take longer to compile than all the rest; what they do with memory is
  # still checked. As options of the sources these come last on the command line.
  set(zx_sanitizers_of_kernels -g0 -fno-sanitize=undefined)
else()
  list(APPEND zx_isas avx2 avx512)
  set(zx_flags_of_avx2 -mavx2 -mfma)
  set(zx_flags_of_avx512 -mavx2 -mfma -mavx512f -mavx512dq -mavx512vl -mprefer-vector-width=512)
endif()

function(zentrix_kernels name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/src/${name}/kernels/*.cpp)
  if(ZENTRIX_SANITIZE)
    set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS "${zx_sanitizers_of_kernels}")
  endif()
  foreach(isa ${zx_isas})
    set(target zx_kernels_${name}_${isa})
    add_library(${target} OBJECT ${sources})
    target_compile_definitions(${target} PRIVATE ZX_ISA=${isa})
    target_compile_options(${target} PRIVATE ${zx_flags_of_${isa}})
    target_link_libraries(${target} PRIVATE zx_flags zx_simd)
    target_compile_options(${target} PRIVATE ${zx_kernel_flags})
    target_include_directories(${target} PRIVATE ${CMAKE_BINARY_DIR}/include/${name} ${CMAKE_BINARY_DIR}/include/constants)
    target_sources(zx_${name} PRIVATE $<TARGET_OBJECTS:${target}>)
    if(NOT isa STREQUAL "baseline")
      add_test(NAME kernel_symbols_${name}_${isa} COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/tools/check_kernel_symbols.sh ${isa}
               $<TARGET_OBJECTS:${target}> COMMAND_EXPAND_LISTS)
    endif()
  endforeach()
endfunction()
