// A host library that lacks all entries but one.
extern "C" void* GetErrorArchive() { return nullptr; }
