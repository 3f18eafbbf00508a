// The module's entries, for hosts that link it. A host that loads it finds them by these names.
//
// An entry takes the number of outputs that are wanted, their slots, the number of arguments, and the
// arguments. There is at least one slot, also when no output is wanted, and all are null. Behind the last
// argument stands a null pointer; the arguments stay the caller's. What an entry puts into a slot is the
// caller's to destroy, also when the entry raises afterwards. Entries raise C++ exceptions: user errors are
// `IMsgIDException`s.
#pragma once

#include "platform/kx.h"

extern "C" {
void copyFile(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);          // copyfile
void moveFile(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);          // movefile
void makeDir(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);           // mkdir
void removeDir(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);         // rmdir
void fileAttrib(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);        // fileattrib
void bnFullDeleteFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);   // delete
void bnFullRecycleFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);  // recycle
void bnFullDirFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);      // dir
void bnFullWhatFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);     // what
void bnIsFileFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);       // isfile
void bnIsFolderFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);     // isfolder

/// To be called once before the first command and once after the last.
void KLInitialize_filemanip();
void KLTerminate_filemanip();
}
