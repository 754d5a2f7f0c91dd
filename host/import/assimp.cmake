# The formats that Assimp reads; Debian packages it for Linux alone.

if(NOT WIN32)
    target_sources(hdo_import PRIVATE
        animated_chain.cpp
        animation_curves.cpp
        assimp_animation.cpp
        assimp_bones.cpp
        assimp_channels.cpp
        assimp_import.cpp
        assimp_material.cpp
        assimp_mesh.cpp
        assimp_morph.cpp
        assimp_pose.cpp
        assimp_roles.cpp
        assimp_scene.cpp
        assimp_skin.cpp
        assimp_text.cpp
        assimp_time.cpp
        assimp_tree.cpp
        assimp_vertices.cpp
        euler_angles.cpp
        gltf_animation.cpp
        gltf_file.cpp
        gltf_roots.cpp
        import_warnings.cpp
        key_fit.cpp
        reader_process.cpp
        scene_blob.cpp
        smoothing_groups.cpp
        source_vertices.cpp)
    target_link_libraries(hdo_import PRIVATE assimp::assimp Threads::Threads)
endif()
