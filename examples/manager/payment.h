/* payment.h: what host.c and module.c agree on: the data of the run event. */
#ifndef PAYMENT_H
#define PAYMENT_H

/* In: a NACHA file, and the configuration that knows it. */
typedef struct PaymentIn {
  char *psConfiguration;
  char *psBuf;
  int nLen;
} PaymentIn;

/* Out: the document. nLen is the capacity of psBuf before, the length of the document after. */
typedef struct PaymentOut {
  char *psBuf;
  int nLen;
} PaymentOut;

#endif
