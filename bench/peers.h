// Other readers of DXF files, doing as little as possible: Assimp's faces get no post-processing, dxflib's are only
// counted.
#pragma once

#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#include <assimp/version.h>
#include <dxflib/dl_creationadapter.h>
#include <dxflib/dl_dxf.h>

#include <string>

inline std::string assimp_name()
{
    return "Assimp " + std::to_string(aiGetVersionMajor()) + '.' + std::to_string(aiGetVersionMinor()) + '.' +
           std::to_string(aiGetVersionPatch());
}

/// Both functions return the number of faces.
inline unsigned long read_with_assimp(const std::string& file)
{
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(file, 0);
    unsigned long faces = 0;
    for (unsigned int i = 0; scene != nullptr && i < scene->mNumMeshes; ++i)
        faces += scene->mMeshes[i]->mNumFaces;
    return faces;
}

inline unsigned long read_with_dxflib(const std::string& file)
{
    struct FaceCounter : DL_CreationAdapter {
        unsigned long faces = 0;
        void add3dFace(const DL_3dFaceData& /*face*/) override { ++faces; }
    } counter;
    DL_Dxf().in(file, &counter);
    return counter.faces;
}
