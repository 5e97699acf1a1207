      * w1_fixed INPUT OUTPUT: the fixed-length order in another
      * fixed-length layout, field by field: display to packed,
      * to edited and to binary numbers, cut and padded texts.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. W1FIXED.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT INF ASSIGN TO DYNAMIC IN-NAME
               ORGANIZATION IS LINE SEQUENTIAL.
           SELECT OUTF ASSIGN TO DYNAMIC OUT-NAME
               ORGANIZATION IS SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD INF RECORD VARYING FROM 1 TO 1000 DEPENDING ON RL.
       01 IN-REC PIC X(1000).
       FD OUTF RECORD VARYING FROM 128 TO 1108 DEPENDING ON OL.
       01 OUT-R.
          05 O-ID PIC X(16).
          05 O-AMT PIC S9(13)V99 COMP-3.
          05 O-CUST PIC X(30).
          05 O-NO PIC 9(12).
          05 O-ADDR PIC X(60).
          05 O-CNT PIC 9(4) COMP.
          05 O-ITEM OCCURS 20 TIMES.
             10 O-QTY PIC S9(7) COMP-3.
             10 O-PRICE PIC Z(5)9.99.
             10 O-SKU PIC X(16).
             10 O-DESC PIC X(20).
       WORKING-STORAGE SECTION.
       01 IN-NAME PIC X(200).
       01 OUT-NAME PIC X(200).
       01 RL PIC 9(5).
       01 OL PIC 9(5).
       01 MORE-FLAG PIC 9 VALUE 1.
       01 I PIC 9(4) COMP-5.
       01 ORDER-R.
          05 MSGTYPE PIC X(8).
          05 ORDERID PIC X(16).
          05 ODATE PIC X(8).
          05 OTIME PIC X(6).
          05 CUSTNO PIC 9(10).
          05 CUSTNAME PIC X(40).
          05 CURRENCY-C PIC X(3).
          05 AMOUNT PIC 9(13)V99.
          05 ADDR PIC X(60).
          05 REMARK PIC X(32).
          05 ITEMCNT PIC 99.
          05 ITEM OCCURS 20 TIMES.
             10 SKU PIC X(12).
             10 DESCR PIC X(14).
             10 QTY PIC 9(6).
             10 PRICE PIC 9(6)V99.
       PROCEDURE DIVISION.
           ACCEPT IN-NAME FROM ARGUMENT-VALUE.
           ACCEPT OUT-NAME FROM ARGUMENT-VALUE.
           OPEN INPUT INF.
           OPEN OUTPUT OUTF.
           PERFORM UNTIL MORE-FLAG = 0
             READ INF
               AT END MOVE 0 TO MORE-FLAG
               NOT AT END
                 MOVE IN-REC TO ORDER-R
                 MOVE ORDERID TO O-ID
                 MOVE AMOUNT TO O-AMT
                 MOVE CUSTNAME TO O-CUST
                 MOVE CUSTNO TO O-NO
                 MOVE ADDR TO O-ADDR
                 MOVE ITEMCNT TO O-CNT
                 PERFORM VARYING I FROM 1 BY 1 UNTIL I > ITEMCNT
                   MOVE QTY(I) TO O-QTY(I)
                   MOVE PRICE(I) TO O-PRICE(I)
                   MOVE SKU(I) TO O-SKU(I)
                   MOVE DESCR(I) TO O-DESC(I)
                 END-PERFORM
                 COMPUTE OL = 128 + 49 * ITEMCNT
                 WRITE OUT-R
             END-READ
           END-PERFORM.
           CLOSE INF.
           CLOSE OUTF.
           STOP RUN.
