/* Functions of a host that happen to carry names the library exports.  Nobody may call them. */
#include <stdlib.h>

void Config(void) { abort(); }
void Resize(void) { abort(); }
void AddEdge(void) { abort(); }
void MaxFlow(void) { abort(); }
void GetMemSize(void) { abort(); }
void SubImage(void) { abort(); }
void PyrDown(void) { abort(); }
void AlignSize(void) { abort(); }
