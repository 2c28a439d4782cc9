# Platform libraries of the engine: OpenGL, GLFW and LodePNG. They are looked
# up only when a folder that needs them is part of the build.
set(KORVEL_NEEDS_GL OFF)
foreach(sub render scene app)
  if(sub IN_LIST KORVEL_SUBSYSTEMS)
    set(KORVEL_NEEDS_GL ON)
  endif()
endforeach()

if(KORVEL_NEEDS_GL)
  set(OpenGL_GL_PREFERENCE GLVND)
  find_package(OpenGL REQUIRED)
  find_package(glfw3 3.3 REQUIRED)
  find_path(LODEPNG_INCLUDE_DIR lodepng.h REQUIRED)
  find_library(LODEPNG_LIBRARY lodepng REQUIRED)
endif()

function(korvel_link_platform target)
  if(KORVEL_NEEDS_GL)
    target_link_libraries(${target} PUBLIC OpenGL::GL glfw ${LODEPNG_LIBRARY})
    target_include_directories(${target} SYSTEM PUBLIC ${LODEPNG_INCLUDE_DIR})
  endif()
endfunction()

# meshoptimizer is a yardstick for the detail-reduction benchmark only; the
# engine never links it.
find_path(MESHOPT_INCLUDE_DIR meshoptimizer.h)
find_library(MESHOPT_LIBRARY meshoptimizer)
function(korvel_bench_extras target)
  if(MESHOPT_INCLUDE_DIR AND MESHOPT_LIBRARY)
    target_include_directories(${target} SYSTEM PRIVATE ${MESHOPT_INCLUDE_DIR})
    target_link_libraries(${target} PRIVATE ${MESHOPT_LIBRARY})
    target_compile_definitions(${target} PRIVATE KORVEL_HAVE_MESHOPT=1)
  endif()
endfunction()
