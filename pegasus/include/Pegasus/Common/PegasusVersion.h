// Version of the provider API this SDK reproduces.
#ifndef Pegasus_Version_h
#define Pegasus_Version_h

#define PEGASUS_PRODUCT_NAME "Provider SDK"
#define PEGASUS_PRODUCT_VERSION "2.14.4"
#define PEGASUS_PRODUCT_STATUS ""
#define PEGASUS_VERSION_NUMBER 0x02140400

#endif
