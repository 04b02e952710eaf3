* The records of FRUIT on one line, in the order of the first index: number, name, amount.
GO TOP
DO WHILE .NOT. EOF
?? STR(#,1)+"."+TRIM(N)+STR(X,1)
SKIP
ENDDO
?
