// The peers, each at its least work: dxflib's faces are only counted, Assimp's pass through no post-processing.

#include "peers.h"

#ifdef HAVE_DXFLIB
#include <dxflib/dl_creationadapter.h>
#include <dxflib/dl_dxf.h>
#endif
#ifdef HAVE_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#endif

namespace
{

#ifdef HAVE_DXFLIB
struct FaceCounter : DL_CreationAdapter {
    unsigned long faces = 0;
    void add3dFace(const DL_3dFaceData& /*face*/) override { ++faces; }
};

unsigned long read_with_dxflib(const char* file_name)
{
    FaceCounter counter;
    DL_Dxf().in(file_name, &counter);
    return counter.faces;
}
#else
constexpr decltype(Peer::read) read_with_dxflib = nullptr;
#endif

#ifdef HAVE_ASSIMP
unsigned long read_with_assimp(const char* file_name)
{
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(file_name, 0);
    unsigned long faces = 0;
    for (unsigned int i = 0; scene != nullptr && i < scene->mNumMeshes; ++i)
        faces += scene->mMeshes[i]->mNumFaces;
    return faces;
}
#else
constexpr decltype(Peer::read) read_with_assimp = nullptr;
#endif

} // namespace

const std::vector<Peer>& peers()
{
    static const std::vector<Peer> all = {{"dxflib", 1 / 9.0, read_with_dxflib}, {"Assimp", 1 / 1.9, read_with_assimp}};
    return all;
}
