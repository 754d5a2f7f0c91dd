// What cxx03_use.cpp does with the SDK.
#ifndef TESTS_UNIT_SDK_SCENE_CXX03_USE_H
#define TESTS_UNIT_SDK_SCENE_CXX03_USE_H

#include <max.h>

// Describes an exporter whose DoExport returns the number of nodes of the scene, or of the
// selection.
ClassDesc* SampleDescriptor();

int CountNodes(INode* top);         // with `top` itself
float FirstParameter(INode* node);  // of the base object; -1 where there is none
// The node's wire colour through a default material's diffuse colour.
DWORD RoundTripWireColor(INode* node);

#endif  // TESTS_UNIT_SDK_SCENE_CXX03_USE_H
