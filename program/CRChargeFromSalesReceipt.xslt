<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: a sales receipt from another company, booked as a credit-card charge.

  Receives the SalesReceiptRet of an exchange file (the sender's CompanyRet somewhere below
  it) and writes the qbXML 1.1 message that adds the charge, without declaration and DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError"><CreditCardChargeAddRq requestID="1">
    <CreditCardChargeAdd>
      AccountRef/FullName      the credit-card account: the parameter "account"; empty by
                               default, for the import to fill in (it is the first AccountRef
                               of the message)
      PayeeEntityRef/FullName  the sender's CompanyRet/CompanyName (first 41 letters)
      TxnDate, RefNumber, Memo (the receipt's memo and its check number)
      ItemLineAdd, ItemGroupLineAdd and the sales-tax line as on a bill (BillFromInvoice.xslt)
    </CreditCardChargeAdd></CreditCardChargeAddRq></QBXMLMsgsRq></QBXML>
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="BillFromInvoice.xslt"/>

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:param name="account" select="''"/>

  <xsl:template match="SalesReceiptRet">
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <CreditCardChargeAddRq requestID="1">
          <CreditCardChargeAdd>
            <AccountRef><FullName><xsl:value-of select="$account"/></FullName></AccountRef>
            <xsl:call-template name="vendor-ref"><xsl:with-param name="element">PayeeEntityRef</xsl:with-param></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="TxnDate"/></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="RefNumber"/></xsl:call-template>
            <xsl:call-template name="memo">
              <xsl:with-param name="extra-label">Check No. </xsl:with-param>
              <xsl:with-param name="extra" select="CheckNumber"/>
            </xsl:call-template>
            <xsl:apply-templates mode="item-line" select="SalesReceiptLineRet | SalesReceiptLineGroupRet"/>
            <xsl:call-template name="tax-line"/>
          </CreditCardChargeAdd>
        </CreditCardChargeAddRq>
      </QBXMLMsgsRq>
    </QBXML>
  </xsl:template>

</xsl:stylesheet>
