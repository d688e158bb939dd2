#ifndef AIO_FWD_H
#define AIO_FWD_H

class aio_ostream;
class aio_istream;

#endif
