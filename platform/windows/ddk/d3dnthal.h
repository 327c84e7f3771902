// winddi.h includes this header, which the compiler's headers lack, and uses nothing of it.
#pragma once
