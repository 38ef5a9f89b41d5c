<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the preview of a sales receipt that another company sent, before it is booked as
  a check or a credit-card charge.

  Receives the root element of an exchange file (SalesReceiptRet, with the sender's
  CompanyRet below it) and writes a whole HTML page: the import strip of importinvoice.xslt,
  then the receipt as its sender mailed it, under the sender's company header.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="importinvoice.xslt"/>
  <xsl:import href="salesreceipt.xslt"/>

  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="SalesReceiptRet">
    <html>
      <xsl:call-template name="import-page-head"><xsl:with-param name="kind">Sales Receipt</xsl:with-param></xsl:call-template>
      <body style="margin:16px;background-color:#ffffff;">
        <xsl:call-template name="import-strip">
          <xsl:with-param name="kind">Sales Receipt</xsl:with-param>
          <xsl:with-param name="lines" select="SalesReceiptLineRet | SalesReceiptLineGroupRet"/>
          <xsl:with-param name="booked-as">Dorvane books it as a check (bank account) or a credit-card charge (card account) to this vendor, paid from the account you choose.</xsl:with-param>
        </xsl:call-template>
        <xsl:apply-templates select="(.//CompanyRet)[1]"/>
        <xsl:apply-imports/>
      </body>
    </html>
  </xsl:template>

</xsl:stylesheet>
